// Producer files: where they are found and how a bad file is refused.
#include <optional>

#include "sim_world.h"

namespace simtest {
namespace {

using oxel::core::FindProducerLibraries;

class ProducerFiles : public ::testing::Test {
 protected:
  void SetUp() override { oxel::core::Library::Initialize(); }
  void TearDown() override { oxel::core::Library::Close(); }
};

TEST_F(ProducerFiles, SearchListsCtiFilesByDirectoryThenName) {
  // Only names count to the search.
  TempDir first, second;
  const std::string b = first.Write("b.cti", "{}");
  const std::string a = first.Write("a.cti", "{}");
  first.Write("notes.txt", "not a producer");
  const std::string c = second.Write("c.cti", "{}");
  {
    ScopedSearchPath path(second.Path() + "::" + first.Path() + ":/no/such/dir");
    EXPECT_EQ(FindProducerLibraries(), (std::vector<std::string>{c, a, b}));
  }
  // The search reads the environment again on every refresh.
  ScopedSearchPath path(first.Path());
  EXPECT_EQ(FindProducerLibraries(), (std::vector<std::string>{a, b}));
  size_t size = 0;
  EXPECT_EQ(OXEL_ProducerSearch_GetPath(2, nullptr, &size), OXEL_RETURN_CODE_OUT_OF_RANGE);
}

TEST_F(ProducerFiles, BadFilesFailToLoadSayingWhereAndWhy) {
  TempDir dir;
  // A file of one camera "C" whose sensor is followed by `members`.
  const auto oneCamera = [](const std::string& members) {
    return R"({"system": {"id": "S", "interfaces": [{"id": "I", "cameras": [)"
           R"({"id": "C", "model": "M", "sensor": {"width": 8, "height": 4})" +
           members + "}]}]}}";
  };
  struct Case {
    const char* name;
    std::optional<std::string> content;  // none: the file does not exist
    std::vector<std::string> textParts;
  };
  const Case cases[] = {
      {"missing.cti", std::nullopt, {"cannot be found"}},
      {"empty.cti", " \n", {"the file is empty"}},
      {"broken.cti", "{\n  \"system\": {\n    \"id\": 5,,\n", {"not valid JSON", "line 3"}},
      {"array.cti", "[1, 2]", {"at the top level", "expected an object"}},
      {"nosystem.cti", "{\"vendor\": \"x\"}", {"missing member \"system\""}},
      {"width.cti",
       R"({"system": {"id": "S", "interfaces": [{"id": "I", "cameras": [
           {"id": "C", "model": "M", "sensor": {"width": "wide", "height": 4}}]}]}})",
       {"/system/interfaces/0/cameras/0/sensor/width", "expected an integer", "\"wide\""}},
      {"typo.cti", oneCamera(R"(, "widht": 3)"), {"unknown member \"widht\""}},
      {"range.cti",
       oneCamera(R"(, "features": {"Gain": {"max": 4.0, "value": 6.0}})"),
       {"/features/Gain", "value 6"}},
      {"computed.cti",
       oneCamera(R"(, "features": {"PayloadSize": {"value": 6}})"),
       {"/features/PayloadSize/value", "the camera computes"}},
      {"rule.cti",
       oneCamera(R"(, "aoi": {"offsetRule": "loose"})"),
       {"/cameras/0/aoi/offsetRule", "one of shrinkSize, strict"}},
      {"twice.cti",
       oneCamera(R"(}, {"id": "C", "model": "M", "sensor": {"width": 8, "height": 4})"),
       {"/cameras/1/id", "used once"}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    const std::string path = c.content ? dir.Write(c.name, *c.content) : dir.Path() + "/" + c.name;
    OXEL_PRODUCER_LIBRARY library = nullptr;
    EXPECT_EQ(OXEL_ProducerLibrary_Open(path.c_str(), path.size() + 1, &library),
              OXEL_RETURN_CODE_CTI_LOADING_ERROR);
    const LastError error = TakeLastError();
    EXPECT_EQ(error.code, OXEL_RETURN_CODE_CTI_LOADING_ERROR);
    EXPECT_NE(error.text.find(path), std::string::npos) << error.text;
    for (const std::string& part : c.textParts) {
      EXPECT_NE(error.text.find(part), std::string::npos) << error.text;
    }
  }
}

}  // namespace
}  // namespace simtest
