// The conformance program's options, given per library by the test
// registration: --library=PATH (the library under test) and --env=NAME=VALUE
// (its settings), set before the library loads.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  for (int i = 1; i < argc; ++i) {
    const std::string argument = argv[i];
    if (argument.rfind("--library=", 0) == 0) {
      setenv("OXEL_LIBRARY_UNDER_TEST", argument.substr(10).c_str(), 1);
    } else if (argument.rfind("--env=", 0) == 0) {
      const std::string setting = argument.substr(6);
      const size_t equals = setting.find('=');
      if (equals != std::string::npos) {
        setenv(setting.substr(0, equals).c_str(), setting.substr(equals + 1).c_str(), 1);
      }
    }
  }
  return RUN_ALL_TESTS();
}
