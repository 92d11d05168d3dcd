#include "run/method_run.h"

#include <cerrno>
#include <new>

#include "fileaccess/file_copy_methods.h"
#include "fileaccess/file_read_write_methods.h"
#include "fileaccess/timed_loops.h"

namespace marrowbench {
namespace {

template <class Values>
Values valuesFrom(const TestConfig& config) {
  Values values;
  values.errorText = config.parameters.errorText;
  values.parameters = config.parameters.parameters;
  return values;
}

void copyOutcome(const _fileGLobal& method, _fileGLobal& result) {
  result.errorText = method.errorText;
  result.parameters.nullPosition = method.parameters.nullPosition;
  result.parameters.stats = method.parameters.stats;
}

bool runLoop(_fileCopy& method) { return runCopy(method); }
bool runLoop(_fileReadWriteBuffer& method) { return runReadWrite(method); }

template <class ConcreteMethod, class Values>
void runOn(const Values& values, _fileGLobal& result) {
  try {
    ConcreteMethod method(values);
    (void)runLoop(method);
    copyOutcome(method, result);
  } catch (const std::bad_alloc&) {
    // From a file stream, which allocates a buffer when it opens. The tests that follow still run.
    result.allocateFailed(ENOMEM);
    result.parameters.nullPosition = -1;
  }
}

}  // namespace

void runCopyTest(const TestConfig& config, const FixedString& source, const FixedString& dest,
                 _fileGLobal& result) {
  auto values = valuesFrom<_fileCopy>(config);
  values.sourcePath = source;
  values.destPath = dest;
  switch (config.method) {
    case Method::stream: return runOn<_fileCopy_stream>(values, result);
    case Method::ansiC: return runOn<_fileCopy_FILE>(values, result);
    case Method::posix: return runOn<_fileCopy_fd>(values, result);
    case Method::system:
    case Method::winApi: return;
  }
}

void runReadWriteTest(const TestConfig& config, const FixedString& path, std::byte* buffer,
                      bool isRead, _fileGLobal& result) {
  auto values = valuesFrom<_fileReadWriteBuffer>(config);
  values.buffer = buffer;
  values.isRead = isRead;
  values.path = path;
  switch (config.method) {
    case Method::stream: return runOn<_fileReadWriteBuffer_stream>(values, result);
    case Method::ansiC: return runOn<_fileReadWriteBuffer_FILE>(values, result);
    case Method::posix: return runOn<_fileReadWriteBuffer_fd>(values, result);
    case Method::system:
    case Method::winApi: return;
  }
}

}  // namespace marrowbench
