#include "oxel/fake_oxel.h"

#include <cstring>

namespace fake_oxel {
namespace {

struct LastError {
  OXEL_RETURN_CODE code = 0;
  std::string description;
  bool failSize = false;
  bool failFill = false;
  int queries = 0;
};

thread_local LastError t_lastError;

OXEL_RETURN_CODE GetLastError(OXEL_RETURN_CODE* code, char* description, size_t* size) {
  ++t_lastError.queries;
  if (description == nullptr ? t_lastError.failSize : t_lastError.failFill) {
    return OXEL_RETURN_CODE_ERROR;
  }
  *code = t_lastError.code;
  return WriteText(t_lastError.description, description, size);
}

template <typename F>
struct Stub;

template <typename... Args>
struct Stub<OXEL_RETURN_CODE (*)(Args...)> {
  static OXEL_RETURN_CODE Call(Args...) {
    SetLastError(OXEL_RETURN_CODE_NOT_IMPLEMENTED, "not faked");
    return OXEL_RETURN_CODE_NOT_IMPLEMENTED;
  }
};

}  // namespace

void SetLastError(OXEL_RETURN_CODE code, const std::string& description) {
  t_lastError.code = code;
  t_lastError.description = description;
}

void FailLastErrorQuery(bool sizeQuery, bool fillQuery) {
  t_lastError.failSize = sizeQuery;
  t_lastError.failFill = fillQuery;
}

int LastErrorQueries() {
  return t_lastError.queries;
}

ScopedTable::ScopedTable(const oxel::core::OxelFunctions* base) {
  if (base != nullptr) {
    table = *base;
  } else {
#define FAKE_OXEL_STUB(name) table.name = &Stub<decltype(&::name)>::Call;
    OXEL_FOR_EACH_FUNCTION(FAKE_OXEL_STUB)
#undef FAKE_OXEL_STUB
    table.OXEL_Library_GetLastError = &GetLastError;
    t_lastError = LastError{};
  }
  previous_ = oxel::core::InstallFunctionTable(&table);
}

ScopedTable::~ScopedTable() {
  oxel::core::InstallFunctionTable(previous_);
}

OXEL_RETURN_CODE WriteText(const std::string& text, char* buffer, size_t* size) {
  if (buffer == nullptr) {
    *size = text.size() + 1;
    return OXEL_RETURN_CODE_SUCCESS;
  }
  if (*size < text.size() + 1) {
    return OXEL_RETURN_CODE_BUFFER_TOO_SMALL;
  }
  std::memcpy(buffer, text.c_str(), text.size() + 1);
  return OXEL_RETURN_CODE_SUCCESS;
}

}  // namespace fake_oxel
