#include "src/table/figure.h"

namespace kestrel {
namespace {

template <typename T>
T Load(const void *row, const Figure &figure) {
  T value;
  std::memcpy(&value, static_cast<const char *>(row) + figure.offset, sizeof value);
  return value;
}

template <typename T>
void Store(void *row, const Figure &figure, T value) {
  std::memcpy(static_cast<char *>(row) + figure.offset, &value, sizeof value);
}

uint64_t Convert(uint64_t value, FigureUnit figureUnit, ReportUnit unit) {
  switch (figureUnit) {
    case FigureUnit::kPlain:
    case FigureUnit::kYesNo: return value;
    case FigureUnit::kKB: return OptionalKBToUnit(value, unit);
    case FigureUnit::kPages: return PagesToUnit(value, unit);
    case FigureUnit::kBytes: return BytesToUnit(value, unit);
  }
  return value;
}

template <typename T>
Value LoadNumber(const Figure &figure, const void *row, ReportUnit unit) {
  const auto wide = static_cast<uint64_t>(Load<T>(row, figure));
  if (figure.unit == FigureUnit::kYesNo) return wide != 0 ? Value('y', "y") : Value('n', "n");
  return static_cast<uint64_t>(static_cast<T>(Convert(wide, figure.unit, unit)));
}

template <typename T>
void SumNumber(const Figure &figure, const void *row, void *sums) {
  using Unsigned = std::make_unsigned_t<T>;
  const auto value = static_cast<Unsigned>(Load<T>(row, figure));
  const auto sum = static_cast<Unsigned>(Load<T>(sums, figure));
  switch (figure.sum) {
    case FigureSum::kLeave: return;
    case FigureSum::kAddAvailable:
      if (value == static_cast<Unsigned>(~Unsigned{0})) return;
      [[fallthrough]];
    case FigureSum::kMean:
    case FigureSum::kAdd: return Store(sums, figure, static_cast<Unsigned>(sum + value));
    case FigureSum::kAddTwice: return Store(sums, figure, static_cast<Unsigned>(sum + value + value));
    case FigureSum::kLast: return Store(sums, figure, value);
    case FigureSum::kAllOnes: return Store(sums, figure, static_cast<Unsigned>(~Unsigned{0}));
  }
}

}  // namespace

Value LoadFigure(const Figure &figure, const void *row, ReportUnit unit) {
  const char *field = static_cast<const char *>(row) + figure.offset;
  switch (figure.type) {
    case FigureType::kU8: return LoadNumber<uint8_t>(figure, row, unit);
    case FigureType::kU16: return LoadNumber<uint16_t>(figure, row, unit);
    case FigureType::kU32: return LoadNumber<uint32_t>(figure, row, unit);
    case FigureType::kU64: return LoadNumber<uint64_t>(figure, row, unit);
    case FigureType::kI32: return LoadNumber<int32_t>(figure, row, unit);
    case FigureType::kI64: return LoadNumber<int64_t>(figure, row, unit);
    // A text field of a record may fill its room to the last byte, without a terminator.
    case FigureType::kText: return std::string_view(field, strnlen(field, figure.size));
    case FigureType::kTextPointer: {
      const char *text = Load<const char *>(row, figure);
      return text == nullptr ? Value() : Value(std::string_view(text));
    }
    case FigureType::kNone: break;
  }
  return {};
}

void SumFigure(const Figure &figure, const void *row, void *sums) {
  switch (figure.type) {
    case FigureType::kU8: return SumNumber<uint8_t>(figure, row, sums);
    case FigureType::kU16: return SumNumber<uint16_t>(figure, row, sums);
    case FigureType::kU32: return SumNumber<uint32_t>(figure, row, sums);
    case FigureType::kU64: return SumNumber<uint64_t>(figure, row, sums);
    case FigureType::kI32: return SumNumber<int32_t>(figure, row, sums);
    case FigureType::kI64: return SumNumber<int64_t>(figure, row, sums);
    case FigureType::kText:
    case FigureType::kTextPointer:
    case FigureType::kNone: return;
  }
}

void FinishSum(const Figure &figure, void *sums, uint32_t rows) {
  if (figure.sum != FigureSum::kMean || rows == 0) return;
  // A mean is one of the kernel's 64-bit averages.
  Store(sums, figure, Load<uint64_t>(sums, figure) / rows);
}

}  // namespace kestrel
