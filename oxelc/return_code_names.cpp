#include "oxelc/return_code_names.h"

namespace oxelc {

const char* ReturnCodeName(OXEL_RETURN_CODE code) {
  static const char* const names[] = {
      "OXEL_RETURN_CODE_SUCCESS",          "OXEL_RETURN_CODE_ERROR",
      "OXEL_RETURN_CODE_NOT_INITIALIZED",  "OXEL_RETURN_CODE_ABORTED",
      "OXEL_RETURN_CODE_BAD_ACCESS",       "OXEL_RETURN_CODE_BAD_ALLOC",
      "OXEL_RETURN_CODE_BUFFER_TOO_SMALL", "OXEL_RETURN_CODE_INVALID_ADDRESS",
      "OXEL_RETURN_CODE_INVALID_ARGUMENT", "OXEL_RETURN_CODE_INVALID_CAST",
      "OXEL_RETURN_CODE_INVALID_HANDLE",   "OXEL_RETURN_CODE_NOT_FOUND",
      "OXEL_RETURN_CODE_OUT_OF_RANGE",     "OXEL_RETURN_CODE_TIMEOUT",
      "OXEL_RETURN_CODE_NOT_AVAILABLE",    "OXEL_RETURN_CODE_NOT_IMPLEMENTED",
      "OXEL_RETURN_CODE_CTI_LOADING_ERROR"};
  if (code < 0 || code > OXEL_RETURN_CODE_CTI_LOADING_ERROR) return "";
  return names[code];
}

const char* NodeTypeName(OXEL_NODE_TYPE type) {
  switch (type) {
    case OXEL_NODE_TYPE_INTEGER:
      return "Integer";
    case OXEL_NODE_TYPE_BOOLEAN:
      return "Boolean";
    case OXEL_NODE_TYPE_COMMAND:
      return "Command";
    case OXEL_NODE_TYPE_FLOAT:
      return "Float";
    case OXEL_NODE_TYPE_STRING:
      return "String";
    case OXEL_NODE_TYPE_REGISTER:
      return "Register";
    case OXEL_NODE_TYPE_CATEGORY:
      return "Category";
    case OXEL_NODE_TYPE_ENUMERATION:
      return "Enumeration";
    case OXEL_NODE_TYPE_ENUMERATION_ENTRY:
      return "EnumerationEntry";
  }
  return "Unknown";
}

const char* AccessName(OXEL_NODE_ACCESS_STATUS access) {
  switch (access) {
    case OXEL_NODE_ACCESS_STATUS_NOT_IMPLEMENTED:
      return "NotImplemented";
    case OXEL_NODE_ACCESS_STATUS_NOT_AVAILABLE:
      return "NotAvailable";
    case OXEL_NODE_ACCESS_STATUS_WRITE_ONLY:
      return "WriteOnly";
    case OXEL_NODE_ACCESS_STATUS_READ_ONLY:
      return "ReadOnly";
    case OXEL_NODE_ACCESS_STATUS_READ_WRITE:
      return "ReadWrite";
  }
  return "NotDefined";
}

}  // namespace oxelc
