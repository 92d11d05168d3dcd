"""Recipes are carried out as they stand: by stubs of the engines and, where they are installed, by the real
ones with a stub of ssh."""

import json
import os
import re
import shutil
import stat
import subprocess
import sys

import pytest

from conftest import COMMAND

SHELL_ENGINES = ["clush", "pdsh", "ssh", "parallel"]
ALL_ENGINES = [*SHELL_ENGINES, "ansible", "srun", "sbatch", "kubernetes"]
# Folders whose names mean something to a shell, an engine or a template.
PATHS = ["/srv/bench", "/srv/with  blanks 'quotes' \"double\" `id` $HOME $(id) $$ ~", "/srv/{{ x }}/{%y%}/{}/%h/%n",
         "/srv/a;b|c&d<e>f(g)*?[h]!#\\'\\''", "/srv/é --x a=b chdir=/x creates=y"]
# GNU parallel replaces what stands in braces: such a folder is refused.
PATHS_OF = {"parallel": [path for path in PATHS if "{" not in path]}
LIST = "c1,c[02-04],n9.lan"
HOSTS = ["c1", "c02", "c03", "c04", "n9.lan"]


def recipe(ctl, engine, path="/srv/bench", hosts=LIST, options=()):
    image = ["--image", "registry/bench:1"] if engine == "kubernetes" else []
    done = ctl.run("fleet", "recipe", engine, "--hosts", hosts, "--control", path, "--run", "run-1", *image,
                   *options, errors="surrogateescape")
    assert (done.returncode, done.stderr) == (0, "")
    return done.stdout


def arm(path, *more):
    return ["fleet", "arm", "--control", path, "--run", "run-1", *more]


class Stubs:
    """Programs that write down how they were called, in a PATH of their own."""

    def __init__(self, ctl):
        self.folder = ctl.folder / "stubs"
        self.folder.mkdir()
        self.log = ctl.folder / "calls"
        self.environment = os.environ | {
            "PATH": f"{self.folder}:{os.environ['PATH']}", "STUB_LOG": str(self.log), "HOME": str(ctl.folder),
            "PYTHONDONTWRITEBYTECODE": "1", "LC_ALL": "C.UTF-8"}
        self.environment.pop("STUB_HOST", None)
        self.put("marrowctl")

    def put(self, *names):
        source = os.path.dirname(__file__) + "/engine_stub.py"
        for name in names:
            path = self.folder / name
            # By this interpreter, whatever PATH says.
            path.write_text(f"#!{sys.executable}\n" + open(source).read().split("\n", 1)[1])
            path.chmod(path.stat().st_mode | stat.S_IXUSR)

    def carry_out(self, text, shell="sh", status=0):
        done = subprocess.run([shell], input=text, env=self.environment, cwd=self.folder, text=True,
                              capture_output=True, timeout=120)
        assert done.returncode == status, done.stderr
        return done

    def calls(self, name):
        lines = self.log.read_text().splitlines() if self.log.exists() else []
        return [call for call in map(json.loads, lines) if call["name"] == name]

    def armed(self):
        """The words with which marrowctl was started on each host."""
        return {call["host"]: decoded(call["words"]) for call in self.calls("marrowctl")}


def decoded(words):
    return [word.encode("latin-1").decode(errors="surrogateescape") for word in words]


@pytest.fixture
def stubs(ctl):
    return Stubs(ctl)


@pytest.mark.parametrize("engine", [*SHELL_ENGINES, "srun", "sbatch"])
@pytest.mark.parametrize("shell", ["sh", "bash"])
def test_shells_read_each_recipe(ctl, engine, shell):
    for path in [*PATHS_OF.get(engine, PATHS), "/srv/\udcff"]:
        done = subprocess.run([shell, "-n"], input=recipe(ctl, engine, path), text=True, capture_output=True,
                              errors="surrogateescape")
        assert (done.returncode, done.stderr) == (0, ""), path


def remote(stubs, command):
    """What a client's shell starts when it gets this command."""
    stubs.log.write_text("")
    subprocess.run(["sh", "-c", os.fsencode(command.encode("latin-1"))], env=stubs.environment, check=True)
    (call,) = stubs.calls("marrowctl")
    return decoded(call["words"])


@pytest.mark.parametrize("engine, options", [
    ("clush", ["-n", "-b", "-S", "-f", "5", "-w", LIST]),
    ("pdsh", ["-R", "ssh", "-S", "-f", "5", "-w", LIST]),
    ("parallel", ["--will-cite", "-j0", "--tag", "--nonall", "--sshloginfile", "-"]),
])
def test_engine_gets_its_window_its_hosts_and_one_command(ctl, stubs, engine, options):
    stubs.put(engine)
    for path in [*PATHS_OF.get(engine, PATHS), "/srv/\udcff"]:
        stubs.log.unlink(missing_ok=True)
        subprocess.run(["sh"], input=os.fsencode(recipe_bytes(ctl, engine, path)), env=stubs.environment, check=True)
        (call,) = stubs.calls(engine)
        *given, command = call["words"]
        assert given == options
        if engine == "pdsh":
            # It puts the host for %h.
            assert not re.search(r"(?<!%)(%%)*%[hun]", command)
            command = command.replace("%%", "%")
        assert remote(stubs, command) == arm(path, "--detach"), path
        if engine == "parallel":
            assert call["input"].split() == HOSTS


def recipe_bytes(ctl, engine, path):
    return os.fsencode(recipe(ctl, engine, path))


def test_ssh_is_started_for_each_host(ctl, stubs):
    stubs.put("ssh")
    for path in [*PATHS, "/srv/\udcff"]:
        stubs.log.unlink(missing_ok=True)
        subprocess.run(["sh"], input=recipe_bytes(ctl, "ssh", path), env=stubs.environment, check=True)
        assert stubs.armed() == {host: arm(path, "--detach") for host in HOSTS}, path
    assert all("BatchMode=yes" in call["words"] for call in stubs.calls("ssh"))


def test_ssh_names_the_hosts_that_it_did_not_reach(ctl, stubs):
    stubs.put("ssh")
    stubs.environment["STUB_DOWN"] = "c03 n9.lan"
    done = stubs.carry_out(recipe(ctl, "ssh"), status=123)
    assert sorted(done.stderr.splitlines()) == ["c03: not armed", "n9.lan: not armed"]
    assert sorted(stubs.armed()) == ["c02", "c04", "c1"]


@pytest.mark.parametrize("engine", ["clush", "pdsh", "parallel"])
def test_real_engine_arms_each_host(ctl, stubs, engine):
    if shutil.which(engine) is None:
        pytest.skip(f"needs {engine}")
    stubs.put("ssh")
    for path in PATHS_OF.get(engine, PATHS):
        stubs.log.unlink(missing_ok=True)
        stubs.carry_out(recipe(ctl, engine, path))
        assert stubs.armed() == {host: arm(path, "--detach") for host in HOSTS}, path


@pytest.mark.parametrize("engine", ["clush", "pdsh", "parallel"])
def test_real_engine_tells_that_a_host_is_down(ctl, stubs, engine):
    if shutil.which(engine) is None:
        pytest.skip(f"needs {engine}")
    stubs.put("ssh")
    stubs.environment["STUB_DOWN"] = "c03"
    done = subprocess.run(["sh"], input=recipe(ctl, engine), env=stubs.environment, text=True, capture_output=True)
    assert done.returncode != 0
    assert sorted(stubs.armed()) == ["c02", "c04", "c1", "n9.lan"]


def test_srun_starts_one_task_on_each_node(ctl, stubs):
    stubs.put("srun")
    for path in PATHS:
        stubs.log.unlink(missing_ok=True)
        stubs.carry_out(recipe(ctl, "srun", path))
        (call,) = stubs.calls("srun")
        # Slurm takes nothing behind a range.
        assert {"--nodelist=c1,c[02-04],n9.lan", "--nodes=5", "--ntasks=5", "--ntasks-per-node=1", "--wait=0",
                "--kill-on-bad-exit=0", "--no-kill"} <= set(call["words"])
        (armed,) = stubs.calls("marrowctl")
        assert decoded(armed["words"]) == arm(path), path


def test_sbatch_holds_the_same_step(ctl, stubs):
    stubs.put("srun")
    text = recipe(ctl, "sbatch", "/srv/it's")
    directives = re.findall(r"^#SBATCH (.*)$", text, re.M)
    assert text.startswith("#!/bin/sh\n#SBATCH ")
    assert {"--nodelist=c1,c[02-04],n9.lan", "--nodes=5", "--ntasks-per-node=1"} <= set(directives)
    stubs.carry_out(text)
    (armed,) = stubs.calls("marrowctl")
    assert decoded(armed["words"]) == arm("/srv/it's")


def test_playbook_passes_the_syntax_check(ctl, stubs):
    if shutil.which("ansible-playbook") is None:
        pytest.skip("needs ansible-playbook")
    for name, path in enumerate(PATHS):
        book = ctl.write(f"{name}.yml", recipe(ctl, "ansible", path))
    books = [str(ctl.folder / f"{name}.yml") for name in range(len(PATHS))]
    done = subprocess.run(["ansible-playbook", "--syntax-check", *books], env=stubs.environment, text=True,
                          capture_output=True)
    assert done.returncode == 0, done.stdout + done.stderr
    book.write_text(book.read_text().replace("hosts: marrowctl_clients", "hots: marrowctl_clients"))
    assert subprocess.run(["ansible-playbook", "--syntax-check", book], env=stubs.environment,
                          capture_output=True).returncode != 0


def test_playbook_arms_each_host(ctl, stubs):
    if shutil.which("ansible-playbook") is None:
        pytest.skip("needs ansible-playbook")
    for path in PATHS:
        stubs.log.unlink(missing_ok=True)
        book = ctl.write("arm.yml", recipe(ctl, "ansible", path))
        done = subprocess.run(["ansible-playbook", "-f", "5", "-e", "ansible_connection=local", "-e",
                               f"ansible_python_interpreter={sys.executable}", book], env=stubs.environment,
                              text=True, capture_output=True, cwd=ctl.folder)
        assert done.returncode == 0, done.stdout + done.stderr
        calls = stubs.calls("marrowctl")
        assert [decoded(call["words"]) for call in calls] == [arm(path, "--detach")] * len(HOSTS), path


def manifest(ctl, path="/srv/bench", hosts=LIST, options=()):
    yaml = pytest.importorskip("yaml", reason="needs python3-yaml")
    return list(yaml.safe_load_all(recipe(ctl, "kubernetes", path, hosts, options)))


def misfits(value, model, models, where):
    """Fields that the model of a Kubernetes object does not have, or that are of another type."""
    if model.startswith("list["):
        if not isinstance(value, list):
            return [f"{where} is no list"]
        return [each for i, item in enumerate(value)
                for each in misfits(item, model[5:-1], models, f"{where}[{i}]")]
    if model.startswith("dict("):
        kind = model[5:-1].split(", ")[1]
        if not isinstance(value, dict):
            return [f"{where} is no map"]
        return [each for key, item in value.items() for each in misfits(item, kind, models, f"{where}.{key}")]
    plain = {"str": str, "int": int, "bool": bool, "object": object, "float": (int, float)}
    if model in plain:
        fits = isinstance(value, plain[model]) and (model == "bool" or not isinstance(value, bool))
        return [] if fits else [f"{where} is {value!r}, not {model}"]
    if not isinstance(value, dict):
        return [f"{where} is no {model}"]
    known = getattr(models, model)
    names = {field: attribute for attribute, field in known.attribute_map.items()}
    found = [f"{where}.{field} is not in {model}" for field in value if field not in names]
    for field, item in value.items():
        if field in names:
            found += misfits(item, known.openapi_types[names[field]], models, f"{where}.{field}")
    return found


@pytest.fixture(scope="module")
def models():
    return pytest.importorskip("kubernetes.client.models", reason="needs python3-kubernetes")


def pod_of(job):
    return job["spec"]["template"]["spec"]


def misfits_of(job, models):
    """Also what a model needs: it refuses to be made without."""
    found = misfits(job, "V1Job", models, "job")
    pod = pod_of(job)
    for container in pod["containers"]:
        models.V1Container(name=container["name"])
        for mount in container["volumeMounts"]:
            models.V1VolumeMount(name=mount["name"], mount_path=mount["mountPath"])
    return found


def test_manifest_is_what_kubernetes_takes(ctl, models):
    for options in ([], ["--claim", "bench"], ["--mount", "/srv"]):
        jobs = manifest(ctl, options=options)
        assert len(jobs) == len(HOSTS)
        assert [each for job in jobs for each in misfits_of(job, models)] == []
        assert {(job["apiVersion"], job["kind"]) for job in jobs} == {("batch/v1", "Job")}


def test_what_kubernetes_does_not_take_is_found(ctl, models):
    (job,) = manifest(ctl, hosts="c1")
    pod = pod_of(job)
    pod["hostNames"] = pod.pop("hostname")
    job["spec"]["backoffLimit"] = "0"
    pod["containers"][0]["command"] = "marrowctl"
    assert len(misfits_of(job, models)) == 3


def test_each_pod_has_its_own_host_name_and_node(ctl):
    jobs = manifest(ctl)
    pods = [pod_of(job) for job in jobs]
    assert [pod["hostname"] for pod in pods] == ["c1", "c02", "c03", "c04", "n9"]
    assert [pod["nodeSelector"]["kubernetes.io/hostname"] for pod in pods] == HOSTS
    names = [job["metadata"]["name"] for job in jobs]
    assert len(set(names)) == len(names)
    assert all(re.fullmatch(r"[a-z0-9]([a-z0-9-]{0,61}[a-z0-9])?", name) for name in names)
    # Where the pod would take the node's name, and where it would run its tests a second time.
    assert all("hostNetwork" not in pod and pod["restartPolicy"] == "Never" for pod in pods)
    assert all(job["spec"]["backoffLimit"] == 0 for job in jobs)


def expanded(word):
    """As Kubernetes reads a command's word, without any variable."""
    return re.sub(r"\$\$", "$", word)


def test_pods_get_the_words_and_the_folder(ctl):
    for path in PATHS:
        (job,) = manifest(ctl, path, "c1")
        container = pod_of(job)["containers"][0]
        words = container["command"]
        assert not any(re.search(r"(?<!\$)(\$\$)*\$\(", word) for word in words), "a variable"
        assert [expanded(word) for word in words] == ["marrowctl", *arm(path)]
        (mount,) = container["volumeMounts"]
        (volume,) = pod_of(job)["volumes"]
        assert mount["mountPath"] == volume["hostPath"]["path"] == path
        assert mount["name"] == volume["name"]
    (job,) = manifest(ctl, "/srv/a/b", "c1", ["--mount", "/srv/a", "--claim", "bench"])
    pod = pod_of(job)
    assert pod["volumes"][0]["persistentVolumeClaim"] == {"claimName": "bench"}
    assert pod["containers"][0]["volumeMounts"][0]["mountPath"] == "/srv/a"


@pytest.mark.parametrize("run, label", [("Run_1.", "Run_1"), ("x" * 63, "x" * 63)])
def test_any_run_has_a_name_in_kubernetes(ctl, run, label):
    yaml = pytest.importorskip("yaml", reason="needs python3-yaml")
    done = ctl.run("fleet", "recipe", "kubernetes", "--hosts", "c1,c2", "--control", "/srv", "--run", run, "--image", "x")
    jobs = list(yaml.safe_load_all(done.stdout))
    names = {job["metadata"]["name"] for job in jobs}
    assert len(names) == 2
    assert all(re.fullmatch(r"[a-z0-9]([a-z0-9-]{0,61}[a-z0-9])?", name) for name in names)
    assert jobs[0]["metadata"]["labels"]["run"] == label
    assert f"-l app=marrowctl,run={label}\n" in done.stdout


def test_hosts_may_stand_in_a_file(ctl, stubs):
    ctl.write("hosts", "c1 c02 # the first\nc03,c04\nn9.lan\n")
    for engine in ALL_ENGINES:
        assert recipe(ctl, engine, hosts="hosts") == recipe(ctl, engine), engine


def test_give_up_and_the_program_are_handed_on(ctl, stubs):
    for engine in ALL_ENGINES:
        text = recipe(ctl, engine, options=["--give-up", "2h", "--marrowctl", "/opt/marrowctl"])
        flat = re.sub(r'[\s"-]+', " ", text)
        assert "/opt/marrowctl fleet arm control /srv/bench run run 1 give up 7200s" in flat, engine


def test_control_folder_is_named_from_the_root(ctl):
    assert f"--control {ctl.folder}/share/x --run" in recipe(ctl, "pdsh", "share/x")
    assert f"--control {ctl.folder} --run" in recipe(ctl, "pdsh", ".")


@pytest.mark.parametrize("engine", ALL_ENGINES)
def test_what_follows_is_said(ctl, engine):
    text = recipe(ctl, engine)
    assert "#   marrowctl fleet publish --control /srv/bench --run run-1 --hosts " in text
    assert "#   marrowctl fleet watch --control /srv/bench --run run-1 --hosts " in text


def test_a_list_of_thousands_is_folded_where_the_engine_can(ctl):
    for engine in ("clush", "pdsh", "srun", "sbatch"):
        text = recipe(ctl, engine, hosts="c[0001-5000]")
        assert "c[0001-5000]" in text and len(text) < 2000, engine


@pytest.mark.parametrize("arguments, message", [
    (["pdssh"], "unknown engine pdssh; did you mean pdsh?"),
    (["foo"], "unknown engine foo; there are clush, pdsh, ssh, parallel, ansible, srun, sbatch, kubernetes"),
    ([], "name an engine: clush, pdsh, ssh, parallel, ansible, srun, sbatch, kubernetes"),
    (["pdsh", "clush"], "too much: clush"),
    (["pdsh", "--hosts", ""], "--hosts: nothing is given"),
    (["pdsh", "--hosts", "c[3-1]"], "--hosts: [3-1] is no range of numbers"),
    (["pdsh", "--control", ""], "--control: nothing is given"),
    (["pdsh", "--hosts", "a,a"], "a is named twice"),
    (["parallel", "--control", "/srv/{}"], '/srv/{} has a "{", for which GNU parallel puts something else'),
    (["pdsh", "--image", "x"], "--image, --mount and --claim are for kubernetes"),
    (["kubernetes"], "name an --image that holds marrowctl and marrowbench"),
])
def test_wrong_usage_is_told(ctl, arguments, message):
    done = ctl.run("fleet", "recipe", *arguments, *([] if "--hosts" in arguments else ["--hosts", "c1"]),
                   *([] if "--control" in arguments else ["--control", "/srv"]), "--run", "r")
    assert (done.returncode, done.stdout) == (64, "")
    assert done.stderr.splitlines()[0] == f"marrowctl fleet recipe: {message}"
