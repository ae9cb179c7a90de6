#include "platkit/record_layout.h"

namespace platkit {

std::string_view UnitName(FieldUnit unit) {
  switch (unit) {
    case FieldUnit::KB: return "KB";
    case FieldUnit::BYTES: return "bytes";
    case FieldUnit::PAGES: return "4 KB pages";
    case FieldUnit::BLOCKS: return "2 MB blocks";
    case FieldUnit::PERCENT: return "%";
    case FieldUnit::USEC: return "us";
    case FieldUnit::NONE:
    case FieldUnit::COUNT:
    case FieldUnit::ID:
    case FieldUnit::FLAGS:
    case FieldUnit::BOOL:
    case FieldUnit::NUMBER: break;
  }
  return "";
}

std::string_view UnitInWords(FieldUnit unit) {
  switch (unit) {
    case FieldUnit::PERCENT: return "percent";
    case FieldUnit::USEC: return "microseconds";
    case FieldUnit::COUNT: return "count";
    case FieldUnit::ID: return "ID";
    case FieldUnit::FLAGS: return "bit mask";
    case FieldUnit::BOOL: return "boolean";
    default: return UnitName(unit);
  }
}

}  // namespace platkit
