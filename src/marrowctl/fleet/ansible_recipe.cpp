#include <fmt/format.h>

#include "marrowctl/fleet/recipe_parts.h"
#include "marrowctl/support/json_writer.h"
#include "marrowctl/support/shell_words.h"

namespace marrowbench::ctl {

std::string yamlText(const std::string& text) {
  std::string quoted;
  JsonWriter(quoted).value(text);
  return quoted;
}

// The shell module, since the other one would expand "$" and "~" itself; !unsafe, since "{{" would
// be a template.
std::string ansibleRecipe(const RecipeOptions& options) {
  const std::size_t atATime = fanOutOf(options.hosts.size());
  std::string text =
      "---\n" +
      headOf(options, "Ansible",
             fmt::format("{} at a time, by the option -f: ansible-playbook -f {} FILE.yml", atATime,
                         atATime)) +
      "- name: Name the clients\n"
      "  hosts: localhost\n"
      "  connection: local\n"
      "  gather_facts: false\n"
      "  tasks:\n"
      "    - name: Add each to the group\n"
      "      ansible.builtin.add_host:\n"
      "        name: \"{{ item }}\"\n"
      "        groups: marrowctl_clients\n"
      "      loop:\n";
  for (const std::string& host : options.hosts) text += "        - " + yamlText(host) + "\n";
  text +=
      "\n- name: Arm the clients\n"
      "  hosts: marrowctl_clients\n"
      "  gather_facts: false\n"
      "  tasks:\n"
      "    - name: Arm the client, which stays behind\n"
      "      ansible.builtin.shell:\n"
      "        cmd: !unsafe " +
      yamlText(shellCommand(armCommand(options, Stay::detached))) + "\n";
  return text + whatFollows(options);
}

}  // namespace marrowbench::ctl
