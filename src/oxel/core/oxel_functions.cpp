#include "oxel/core/oxel_functions.h"

#include <atomic>

#include "oxel/core/exceptions.h"

namespace oxel::core {
namespace {

std::atomic<const OxelFunctions*> g_table{nullptr};

}  // namespace

const OxelFunctions& Api() {
  const OxelFunctions* table = g_table.load(std::memory_order_acquire);
  if (table == nullptr) {
    throw NotInitializedException(
        "The Oxel library is not loaded. Call oxel::Library::Initialize() before anything else.");
  }
  return *table;
}

bool IsApiBound() {
  return g_table.load(std::memory_order_acquire) != nullptr;
}

const OxelFunctions* InstallFunctionTable(const OxelFunctions* table) {
  return g_table.exchange(table, std::memory_order_acq_rel);
}

}  // namespace oxel::core
