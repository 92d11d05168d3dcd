#include "settings/settings_validation.h"

#include <algorithm>

namespace marrowbench {
namespace {

// Unlike testTypeOf(): here a line with both paths in memory is a write test. It runs as a read
// test, with the parameters of a write test.
TestType validatedType(const TestConfig& config) {
  if (config.sourceTemplate.isEmpty()) return TestType::write;
  return config.destTemplate.isEmpty() ? TestType::read : TestType::copy;
}

void defaultChunkSize(ParameterBlock& p) {
  if (p.chunkSize != 0) return;
  p.chunkSize = defaultStepBytes();
  p.stats.stepBytes = defaultStepBytes();
}

// Descriptors have no buffering of their own; the value is only shown.
void validatePosix(ParameterBlock& p, TestType type, std::int32_t largestSystemBuffer) {
  p.systemBuffer = std::min(p.systemBuffer, largestSystemBuffer);
  if (type == TestType::read) p.prealloc = false;
  if (type == TestType::copy) defaultChunkSize(p);
}

void validateSystem(ParameterBlock& p) {
  p.systemBuffer = -1;
  p.prealloc = false;
  defaultChunkSize(p);
}

// A chunk size of 0 stays: streams can copy a file whole.
void validateStream(ParameterBlock& p) {
  p.systemBuffer = std::min(p.systemBuffer, 1);
  if (p.systemBuffer >= 0 && p.chunkSize < 1) p.systemBuffer = -1;
  p.prealloc = false;
}

void validateAnsiC(ParameterBlock& p, TestType type) {
  p.systemBuffer = std::min(p.systemBuffer, 1);
  if (p.systemBuffer >= 0 && p.chunkSize < 1) p.systemBuffer = -1;
  if (p.systemBuffer < 0 && type == TestType::copy) defaultChunkSize(p);
  p.prealloc = false;
}

void validateForMethod(Method method, ParameterBlock& p, TestType type) {
  switch (method) {
    case Method::posix: return validatePosix(p, type, 1);
    case Method::winApi: return validatePosix(p, type, 2);
    case Method::system: return validateSystem(p);
    case Method::stream: return validateStream(p);
    case Method::ansiC: return validateAnsiC(p, type);
  }
  p.prealloc = false;
}

}  // namespace

void validate(TestConfig& config) {
  ParameterBlock& p = config.parameters.parameters;
  const TestType type = validatedType(config);
  p.fileSize = std::min(p.fileSize, kMaxFileSize);

  validateForMethod(config.method, p, type);

  const bool writesNothing = type == TestType::read && config.method != Method::system;
  if (writesNothing || p.chunkSize == 0) p.flush = false;
  if (p.chunkSize == 0) {
    p.chunkWait = 0;
    p.stats.waitMs = 0;
  }
}

}  // namespace marrowbench
