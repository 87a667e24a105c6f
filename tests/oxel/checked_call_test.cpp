// Failed C calls become exceptions of the family, with the last error's code,
// name and description in one fixed format.
#include <gtest/gtest.h>

#include <functional>
#include <typeindex>
#include <vector>

#include "oxel/core/checked_call.h"
#include "oxel/core/exceptions.h"
#include "oxel/core/return_codes.h"
#include "oxel/fake_oxel.h"

namespace oxel::core {
namespace {

// The dynamic class of what `call` throws (void when it throws nothing).
std::type_index ThrownClass(const std::function<void()>& call, std::string* what) {
  try {
    call();
  } catch (const Exception& error) {
    *what = error.what();
    return typeid(error);
  }
  return typeid(void);
}

TEST(CallCheckedTest, MessageAndClassFollowTheLastError) {
  struct Row {
    OXEL_RETURN_CODE code;
    const char* name;
    std::type_index thrown;
  };
  const std::vector<Row> rows = {
      {0, "OXEL_RETURN_CODE_SUCCESS", typeid(void)},
      {1, "OXEL_RETURN_CODE_ERROR", typeid(InternalErrorException)},
      {2, "OXEL_RETURN_CODE_NOT_INITIALIZED", typeid(NotInitializedException)},
      {3, "OXEL_RETURN_CODE_ABORTED", typeid(AbortedException)},
      {4, "OXEL_RETURN_CODE_BAD_ACCESS", typeid(BadAccessException)},
      {5, "OXEL_RETURN_CODE_BAD_ALLOC", typeid(BadAllocException)},
      {6, "OXEL_RETURN_CODE_BUFFER_TOO_SMALL", typeid(InternalErrorException)},
      {7, "OXEL_RETURN_CODE_INVALID_ADDRESS", typeid(InvalidAddressException)},
      {8, "OXEL_RETURN_CODE_INVALID_ARGUMENT", typeid(InvalidArgumentException)},
      {9, "OXEL_RETURN_CODE_INVALID_CAST", typeid(InvalidCastException)},
      {10, "OXEL_RETURN_CODE_INVALID_HANDLE", typeid(InvalidInstanceException)},
      {11, "OXEL_RETURN_CODE_NOT_FOUND", typeid(NotFoundException)},
      {12, "OXEL_RETURN_CODE_OUT_OF_RANGE", typeid(OutOfRangeException)},
      {13, "OXEL_RETURN_CODE_TIMEOUT", typeid(TimeoutException)},
      {14, "OXEL_RETURN_CODE_NOT_AVAILABLE", typeid(NotAvailableException)},
      {15, "OXEL_RETURN_CODE_NOT_IMPLEMENTED", typeid(NotImplementedException)},
      {16, "OXEL_RETURN_CODE_CTI_LOADING_ERROR", typeid(CTILoadingException)},
      {17, "", typeid(InternalErrorException)},
      {-1, "", typeid(InternalErrorException)},
  };
  fake_oxel::ScopedTable fake;
  for (const auto& row : rows) {
    SCOPED_TRACE(row.code);
    EXPECT_EQ(ReturnCodeName(row.code), row.name);
    fake_oxel::SetLastError(row.code, "Width 13 is not a multiple of 8");
    std::string what;
    // The call itself reports an unrelated code: the last error decides.
    const auto thrown =
        ThrownClass([] { CallChecked([] { return OXEL_RETURN_CODE_BAD_ALLOC; }); }, &what);
    EXPECT_EQ(thrown, row.thrown);
    if (row.code != 0) {
      EXPECT_EQ(what, "Error-Code: " + std::to_string(row.code) + " (" + row.name +
                          ") | Error-Description: Width 13 is not a multiple of 8");
    }
  }
}

TEST(CallCheckedTest, LastErrorIsAskedOnlyOnFailureAndALostOneIsSaidSo) {
  fake_oxel::ScopedTable fake;
  CallChecked([] { return OXEL_RETURN_CODE_SUCCESS; });
  std::function<OXEL_RETURN_CODE()> empty;
  EXPECT_THROW(CallChecked(empty), std::bad_function_call);
  EXPECT_EQ(fake_oxel::LastErrorQueries(), 0);

  fake_oxel::SetLastError(OXEL_RETURN_CODE_TIMEOUT, "x");
  for (const auto& [sizeFails, fillFails] : {std::pair{true, false}, std::pair{false, true}}) {
    fake_oxel::FailLastErrorQuery(sizeFails, fillFails);
    try {
      CallChecked([] { return OXEL_RETURN_CODE_TIMEOUT; });
      ADD_FAILURE() << "nothing thrown";
    } catch (const InternalErrorException& error) {
      EXPECT_STREQ(error.what(), "Could not query the last error!");
    }
  }
}

TEST(QueryValueTest, FailureWithoutLastErrorKeepsWhatTheCallWrote) {
  fake_oxel::ScopedTable fake;
  fake_oxel::SetLastError(OXEL_RETURN_CODE_SUCCESS, "");
  EXPECT_EQ(QueryValue<int64_t>([](int64_t* out) {
              *out = 42;
              return OXEL_RETURN_CODE_ERROR;
            }),
            42);
  EXPECT_EQ(QueryValue<double>([](double*) { return OXEL_RETURN_CODE_ERROR; }), 0.0);
}

TEST(QueryTextTest, SizeThenFillAndListsStopAtTheFirstFailure) {
  fake_oxel::ScopedTable fake;
  std::vector<bool> bufferGiven;
  const auto text = QueryText([&](char* buffer, size_t* size) {
    bufferGiven.push_back(buffer != nullptr);
    const auto code = fake_oxel::WriteText("U3V", buffer, size);
    if (buffer != nullptr) {
      *size = 1;  // what the fill writes back must not shorten the text
    }
    return code;
  });
  EXPECT_EQ(text, "U3V");
  EXPECT_EQ(bufferGiven, (std::vector<bool>{false, true}));

  EXPECT_EQ(
      QueryText([](char* buffer, size_t* size) { return fake_oxel::WriteText("", buffer, size); }),
      "");
  EXPECT_THROW(QueryText([](char*, size_t* size) {
                 *size = 0;
                 return OXEL_RETURN_CODE_SUCCESS;
               }),
               std::length_error);

  const std::vector<std::string> paths = {"/a.cti", "/b.cti", "/c.cti"};
  const auto count = [&](size_t* out) {
    *out = paths.size();
    return OXEL_RETURN_CODE_SUCCESS;
  };
  EXPECT_EQ(QueryTextList(count,
                          [&](size_t index, char* buffer, size_t* size) {
                            return fake_oxel::WriteText(paths.at(index), buffer, size);
                          }),
            paths);

  std::vector<size_t> asked;
  fake_oxel::SetLastError(OXEL_RETURN_CODE_NOT_FOUND, "gone");
  EXPECT_THROW(QueryTextList(count,
                             [&](size_t index, char* buffer, size_t* size) {
                               asked.push_back(index);
                               return index == 1 ? OXEL_RETURN_CODE_NOT_FOUND
                                                 : fake_oxel::WriteText("p", buffer, size);
                             }),
               NotFoundException);
  EXPECT_EQ(asked, (std::vector<size_t>{0, 0, 1}));
}

}  // namespace
}  // namespace oxel::core
