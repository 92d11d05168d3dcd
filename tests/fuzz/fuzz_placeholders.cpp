// Any path template below any settings file, through expansion and normalisation.

#include <fuzzer/FuzzedDataProvider.h>

#include <cstddef>
#include <cstdint>
#include <string>

#include "fuzz/sound.h"
#include "paths/path_text.h"
#include "paths/placeholders.h"
#include "settings/test_config.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace marrowbench;
  FuzzedDataProvider input(data, size);
  TestConfig config;
  config.settingsFileNumber = input.ConsumeIntegral<std::int32_t>();
  const auto line = input.ConsumeIntegral<std::int32_t>();
  const auto iteration = input.ConsumeIntegral<std::int32_t>();
  const bool keepCfgPath = input.ConsumeBool();
  config.settingsPath = std::string_view(input.ConsumeRandomLengthString(600));
  FixedString text = std::string_view(input.ConsumeRemainingBytesAsString());

  expandPlaceholders(config, text, line, iteration, keepCfgPath);
  test::expectSound(text);
  test::expect(text.length() < 2 || text.view().find('\\') == std::string_view::npos);

  const FixedString folder = parentFolder(text);
  test::expectSound(folder);
  test::expect(folder.isEmpty() || text.length() < 3 ||
               (folder.view().back() == '/' && text.view().starts_with(folder.view())));
  test::expectSound(thirdParentFolder(text));
  test::expectSound(nameWithoutExtension(text));
  return 0;
}
