#ifndef MARROWBENCH_TESTS_MARROWCTL_RUN_CONSOLE_TEXT_H
#define MARROWBENCH_TESTS_MARROWCTL_RUN_CONSOLE_TEXT_H

#include <string>

/// What the program prints, piece by piece.
namespace marrowbench::ctl::test {

inline const std::string kMargin(18, ' ');
inline const std::string kDate = "Nov 16. 02:21.29: ";

inline std::string asked(const std::string& path) {
  return "\n\n######## Loading/Waiting for settings file '" + path + "'  ########\n\n";
}

/// The settings file was there.
inline const std::string kFound = "\n11.16. 02:21.29\nConfig loaded. \n";

/// It had to be waited for.
inline std::string foundLate(int shownSeconds) {
  return "\n11.16. 02:21.29\nConfig loaded. Waiting for the next minute to start... " +
         std::to_string(shownSeconds) +
         "sec \n\nNote: A time sync for all your clients helps to start this test at the same "
         "time.\n\n";
}

inline std::string opening(const std::string& path, int configIndex,
                           const std::string& line = "posix;0;...") {
  return kDate + "___   " + path + "  __  " + std::to_string(configIndex) + "  ____________\n" +
         kMargin + line + "\n";
}

inline std::string summary(const std::string& time, const std::string& mibPerSecond) {
  return "1 files written ( 64.00 MiB. " + time + ". " + mibPerSecond +
         " MiB/s. Transfer speed setting: 100% )";
}

/// @param report  a summary or an error
inline std::string iteration(const std::string& report) {
  return kMargin + report + "\n" + kMargin + "Null data test: N/A\n" + kMargin +
         "Destination fileserver IP: \n" + kMargin + " \n";
}

inline const std::string kTestEnd = kMargin + "Total time: 124ms ( data read/write only: 1ms)\n" +
                                    kDate + "___________________________\n\n";

}  // namespace marrowbench::ctl::test

#endif
