// Binding the C library at run time, and what the layer does while nothing is
// bound or started.
#include <gtest/gtest.h>

#include <cstdlib>
#include <iostream>

#include "oxel/core/device_manager.h"
#include "oxel/core/exceptions.h"
#include "oxel/core/library.h"
#include "oxel/core/oxel_loader.h"
#include "oxel/fake_oxel.h"

namespace oxel::core {
namespace {

std::string BindError(const char* file) {
  try {
    BindOxelLibrary(file);
  } catch (const NotFoundException& error) {
    return error.what();
  }
  return "bound";
}

TEST(BindingTest, MissingFileAndMissingFunctionAreNamed) {
  const std::string missingFile = BindError("/nonexistent/tavro/liboxel.so.1");
  EXPECT_NE(missingFile.find("Could not load the Oxel library /nonexistent/tavro/liboxel.so.1"),
            std::string::npos)
      << missingFile;
  EXPECT_NE(missingFile.find("No such file"), std::string::npos) << missingFile;

  // A bare name is looked for by the loader, then beside the module.
  const std::string missingBare = BindError("libtavro-absent.so.1");
  EXPECT_NE(missingBare.find("; beside the plug-in: "), std::string::npos) << missingBare;
  EXPECT_NE(missingBare.find("bin/libtavro-absent.so.1: cannot open"), std::string::npos)
      << missingBare;

  // The maths library is found but has none of the functions: the first one
  // of the list is reported, with the loader's text.
  const std::string missingSymbol = BindError("libm.so.6");
  EXPECT_NE(missingSymbol.find("libm.so.6 lacks the function OXEL_Library_Initialize"),
            std::string::npos)
      << missingSymbol;
  EXPECT_NE(missingSymbol.find("undefined symbol"), std::string::npos) << missingSymbol;
}

TEST(BindingTest, NothingBoundMeansNotInitialized) {
  const OxelFunctions* previous = InstallFunctionTable(nullptr);
  EXPECT_FALSE(Library::IsInitialized());
  EXPECT_THROW(Api(), NotInitializedException);
  EXPECT_THROW(Library::Close(), NotInitializedException);
  InstallFunctionTable(previous);
}

// The manager is a process-wide singleton, so its first construction is
// checked in a fresh process.
TEST(BindingTest, DeviceManagerNeedsAStartedLibraryAndCanBeRetried) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(
      {
        static bool started = false;
        fake_oxel::ScopedTable fake;
        fake.table.OXEL_Library_IsInitialized = [](OXEL_BOOL8* out) -> OXEL_RETURN_CODE {
          *out = started ? 1 : 0;
          return OXEL_RETURN_CODE_SUCCESS;
        };
        try {
          DeviceManager::Instance();
          std::cerr << "built without a started library";
          std::exit(1);
        } catch (const NotInitializedException& error) {
          if (std::string(error.what()) !=
              "Oxel API library not initialized. Call oxel::Library::Initialize() / "
              "OXEL_C_ABI_PREFIX OXEL_InitializeLibrary() before anything else.") {
            std::cerr << "wrong text: " << error.what();
            std::exit(2);
          }
        }
        started = true;
        DeviceManager& first = DeviceManager::Instance();
        std::exit(&first == &DeviceManager::Instance() && first.Devices().empty() ? 0 : 3);
      },
      ::testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace oxel::core
