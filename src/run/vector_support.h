#ifndef MARROWBENCH_RUN_VECTOR_SUPPORT_H
#define MARROWBENCH_RUN_VECTOR_SUPPORT_H

/// The vector code that may run: the x86-64 processor has it, and the system keeps its registers.
namespace marrowbench {

/// AVX2.
[[nodiscard]] bool canRunVectors256();

/// AVX-512 F, BW and DQ. macOS keeps these registers only once a program has used them, so there
/// the answer is no.
[[nodiscard]] bool canRunVectors512();

}  // namespace marrowbench

#endif
