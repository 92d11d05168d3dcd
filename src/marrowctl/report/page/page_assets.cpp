#include "marrowctl/report/page/page_assets.h"

#include <cstddef>
#include <cstdint>

// Read by the assembler: a compiler would take seconds and gigabytes for a megabyte of numbers. The
// size is computed there as well, because a linker may move what stands between two names. Both
// .pushsection and the names below, which get no underscore, are the same for ELF and Mach-O; CMake
// knows the section's name and the paths.
asm(".pushsection " MARROWCTL_CONSTANTS R"(
.macro embed name, path
.globl \name
.globl \name\()_size
.balign 8
\name\()_size:
.quad 2f-1f
\name:
1:
.incbin "\path"
2:
.endm
embed marrowctl_page_library, ")" MARROWCTL_LIBRARY_FILE R"("
embed marrowctl_page_script, ")" MARROWCTL_SCRIPT_FILE R"("
embed marrowctl_page_style, ")" MARROWCTL_STYLE_FILE R"("
.popsection
)");

namespace marrowbench::ctl {
namespace {

extern "C" {
extern const char pageLibrary[] asm("marrowctl_page_library");
extern const std::uint64_t pageLibrarySize asm("marrowctl_page_library_size");
extern const char pageScript[] asm("marrowctl_page_script");
extern const std::uint64_t pageScriptSize asm("marrowctl_page_script_size");
extern const char pageStyle[] asm("marrowctl_page_style");
extern const std::uint64_t pageStyleSize asm("marrowctl_page_style_size");
}

}  // namespace

PageAssets pageAssets() {
  return {{pageLibrary, static_cast<std::size_t>(pageLibrarySize)},
          {pageScript, static_cast<std::size_t>(pageScriptSize)},
          {pageStyle, static_cast<std::size_t>(pageStyleSize)}};
}

}  // namespace marrowbench::ctl
