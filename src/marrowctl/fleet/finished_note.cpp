#include "marrowctl/fleet/finished_note.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <nlohmann/json.hpp>

#include "marrowctl/fleet/open_file.h"
#include "marrowctl/support/json_text.h"

namespace marrowbench::ctl {
namespace {

constexpr const char* kSchema = "marrowctl.finished/1";

std::string textOf(const FinishedNote& note) {
  const Json object = {{"schema", kSchema}, {"host", note.host},     {"run", note.run},
                       {"time", note.time}, {"status", note.status}, {"message", note.message}};
  return jsonTextOf(object) + "\n";
}

int writeNew(const std::string& path, std::string_view text) {
  OpenFile file(path, O_WRONLY | O_CREAT | O_TRUNC);
  if (!file.isOpen()) return errno;
  const int code = file.write(text);
  const int closing = file.close();
  return code != 0 ? code : closing;
}

}  // namespace

int writeFinishedNote(const ControlFolder& folder, const FinishedNote& note) {
  const std::string draft =
      folder.file("." + std::string(kFinishedPrefix) + note.host + "_" + std::to_string(getpid()));
  int code = writeNew(draft, textOf(note));
  if (code == 0 && std::rename(draft.c_str(), folder.finished(note.host).c_str()) != 0)
    code = errno;
  if (code != 0) (void)std::remove(draft.c_str());
  return code;
}

std::optional<FinishedNote> finishedNoteFrom(std::string_view text) {
  const Json object = jsonFrom(text);
  if (!object.is_object() || object.value("schema", Json()) != kSchema) return std::nullopt;
  FinishedNote note;
  const auto take = [&object](const char* name, std::string& value) {
    const auto found = object.find(name);
    if (found != object.end() && found->is_string()) value = found->get<std::string>();
  };
  take("host", note.host);
  take("run", note.run);
  take("time", note.time);
  take("message", note.message);
  const auto status = object.find("status");
  if (status == object.end() || !status->is_number_integer()) return std::nullopt;
  note.status = status->get<int>();
  return note;
}

}  // namespace marrowbench::ctl
