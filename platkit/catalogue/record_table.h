// Describes the records of records.h: RecordTable<Record> lists the fields of a record in the order of their offsets,
// gaps included. A description that does not match its struct does not compile: it must list every field with its name,
// offset, type and size, and the fields must cover the whole struct.
//
//   template <>
//   struct RecordTable<GroupLeaderIDRecord> {
//     PLATKIT_TABLE_OF(GroupLeaderIDRecord);
//     static constexpr Field kFields[] = {
//         PLATKIT_FIELD(0, uint32_t, leaderID, ID, "memory client of the world that leads a VM or user-world group"),
//     };
//   };
//
//   PLATKIT_FIELD(offset, type, name, unit, meaning)       an integer; `unit` is one of FieldUnit
//   PLATKIT_TEXT(offset, size, name, meaning)              a text that may lack a terminator
//   PLATKIT_ENTRIES(offset, record, name, count, meaning)  an array of records
//   PLATKIT_GAP(offset, size)                              bytes without a known meaning: unread_<offset>
#ifndef PLATKIT_CATALOGUE_RECORD_TABLE_H
#define PLATKIT_CATALOGUE_RECORD_TABLE_H

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <type_traits>

#include "platkit/record_layout.h"
#include "platkit/records.h"

namespace platkit {

template <typename Record>
struct RecordTable;

#define PLATKIT_TABLE_OF(name) \
  using Record = ::name;       \
  static constexpr std::string_view kName = #name

#define PLATKIT_FIELD(offset, type, name, unit, meaning)        \
  platkit::record_table::Checked<type, decltype(Record::name)>( \
      offsetof(Record, name),                                   \
      {offset, sizeof(type), platkit::record_table::TypeOf<type>(), platkit::FieldUnit::unit, #name, meaning})

#define PLATKIT_TEXT(offset, size, name, meaning)                     \
  platkit::record_table::Checked<char[size], decltype(Record::name)>( \
      offsetof(Record, name), {offset, size, platkit::FieldType::kText, platkit::FieldUnit::NONE, #name, meaning})

#define PLATKIT_ENTRIES(offset, record, name, count, meaning)                                                         \
  platkit::record_table::Checked<record[count], decltype(Record::name)>(                                              \
      offsetof(Record, name), {offset, sizeof(record), platkit::FieldType::kEntries, platkit::FieldUnit::NONE, #name, \
                               meaning, count, &platkit::kRecordLayout<record>})

#define PLATKIT_GAP(offset, size)                                                   \
  platkit::record_table::Checked<uint8_t[size], decltype(Record::unread_##offset)>( \
      offsetof(Record, unread_##offset),                                            \
      {offset, size, platkit::FieldType::kGap, platkit::FieldUnit::NONE, "unread_" #offset, {}})

namespace record_table {

// These functions are not constexpr. A call to one of them is therefore a compiler error, which points to the wrong row
// or record.
inline void FieldIsAtAnotherOffset() {}
inline void FieldsLeaveAGapOrOverlap() {}
inline void FieldsEndBeforeTheRecord() {}

template <typename T>
consteval FieldType TypeOf() {
  if constexpr (std::is_same_v<T, uint8_t>) return FieldType::kU8;
  if constexpr (std::is_same_v<T, uint16_t>) return FieldType::kU16;
  if constexpr (std::is_same_v<T, uint32_t>) return FieldType::kU32;
  if constexpr (std::is_same_v<T, uint64_t>) return FieldType::kU64;
  if constexpr (std::is_same_v<T, int32_t>) return FieldType::kI32;
  if constexpr (std::is_same_v<T, int64_t>) return FieldType::kI64;
}

template <typename Described, typename Declared>
consteval Field Checked(size_t offset, Field field) {
  static_assert(std::is_same_v<Described, Declared>, "the field has another type or size in records.h");
  if (field.offset != offset) FieldIsAtAnotherOffset();
  return field;
}

template <typename Record>
consteval RecordLayout CheckedLayout() {
  using Table = RecordTable<Record>;
  static_assert(std::is_same_v<typename Table::Record, Record>, "PLATKIT_TABLE_OF names another record");
  uint32_t position = 0;
  for (const Field &field : Table::kFields) {
    if (field.offset != position) FieldsLeaveAGapOrOverlap();
    position += field.size * field.count;
  }
  if (position != sizeof(Record)) FieldsEndBeforeTheRecord();
  return {Table::kName, sizeof(Record), Table::kFields};
}

}  // namespace record_table

// The description of a record.
template <typename Record>
inline constexpr RecordLayout kRecordLayout = record_table::CheckedLayout<Record>();

}  // namespace platkit

#endif  // PLATKIT_CATALOGUE_RECORD_TABLE_H
