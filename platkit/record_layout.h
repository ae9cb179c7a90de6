// Descriptions of the wire records: offset, type, unit and meaning of each field. platkit/catalogue/ has the tables.
#ifndef PLATKIT_RECORD_LAYOUT_H
#define PLATKIT_RECORD_LAYOUT_H

#include <cstdint>
#include <span>
#include <string_view>

namespace platkit {

enum class FieldType : uint8_t { kU8, kU16, kU32, kU64, kI32, kI64, kText, kEntries, kGap };

enum class FieldUnit : uint8_t {
  NONE,  // of texts, entries and gaps
  KB,
  BYTES,
  PAGES,   // of 4 KB
  BLOCKS,  // of 2 MB
  PERCENT,
  USEC,  // microseconds
  COUNT,
  ID,
  FLAGS,   // a bit mask
  BOOL,    // 0: no; any other value: yes
  NUMBER,  // anything else
};

// The unit as it is printed after a figure, for example "KB"; empty for units that only classify a figure.
std::string_view UnitName(FieldUnit unit);

// The unit as records.h names it in the comment on a field, for example "microseconds"; empty for NONE and NUMBER.
std::string_view UnitInWords(FieldUnit unit);

struct RecordLayout;

struct Field {
  uint32_t offset;  // in bytes
  uint32_t size;    // in bytes; of one entry if the field is an array of records
  FieldType type;
  FieldUnit unit;
  std::string_view name;         // as in records.h
  std::string_view description;  // empty for a gap
  uint32_t count = 1;            // entries
  const RecordLayout *entry = nullptr;
};

struct RecordLayout {
  std::string_view name;          // as in records.h
  uint32_t size;                  // in bytes
  std::span<const Field> fields;  // by offset, gaps included; together they cover the record
};

}  // namespace platkit

#endif  // PLATKIT_RECORD_LAYOUT_H
