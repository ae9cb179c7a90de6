#include "tools/nodal/history/series_printer.h"

#include <algorithm>

#include "platkit/history/moment.h"
#include "tools/nodal/snapshot/record_json.h"
#include "tools/nodal/support/output.h"
#include "tools/nodal/support/text.h"

namespace nodal {
namespace {

using platkit::history::TimeText;

std::string CsvField(std::string_view text) {
  std::string field = Printable(text);
  if (field.find_first_of(",\"") == std::string::npos) return field;
  std::string quoted = "\"";
  for (const char c : field) {
    if (c == '"') quoted += '"';
    quoted += c;
  }
  return quoted + "\"";
}

class CsvPrinter : public SeriesPrinter {
 public:
  explicit CsvPrinter(bool hasSteps) : hasSteps_(hasSteps) {}

  void Begin() override { Print(hasSteps_ ? "time,figure,samples,min,max,last\n" : "time,figure,value\n"); }
  void ShowValue(int64_t second, std::string_view figure, const std::string &value) override {
    Print(TimeText(second) + "," + CsvField(figure) + "," + value + "\n");
  }
  void ShowStep(int64_t second, std::string_view figure, const Step &step) override {
    Print(TimeText(second) + "," + CsvField(figure) + "," + std::to_string(step.samples) + "," + step.least + "," +
          step.largest + "," + step.last + "\n");
  }
  void End() override {}

 private:
  const bool hasSteps_;
};

// Prints one JSON object per line.
class JsonPrinter : public SeriesPrinter {
 public:
  void Begin() override { Print("["); }
  void ShowValue(int64_t second, std::string_view figure, const std::string &value) override {
    PrintObject(second, figure, "\"value\": " + Number(value));
  }
  void ShowStep(int64_t second, std::string_view figure, const Step &step) override {
    PrintObject(second, figure,
                "\"samples\": " + std::to_string(step.samples) + ", \"min\": " + Number(step.least) +
                    ", \"max\": " + Number(step.largest) + ", \"last\": " + Number(step.last));
  }
  void End() override { Print(isFirst_ ? "]\n" : "\n]\n"); }

 private:
  static std::string Number(const std::string &value) { return value.empty() ? "null" : value; }

  void PrintObject(int64_t second, std::string_view figure, const std::string &values) {
    Print(std::string(isFirst_ ? "\n" : ",\n") + "  {\"time\": \"" + TimeText(second) +
          "\", \"figure\": " + TextToJson(figure).dump(-1, ' ', true) + ", " + values + "}");
    isFirst_ = false;
  }

  bool isFirst_ = true;
};

}  // namespace

std::unique_ptr<SeriesPrinter> MakeSeriesPrinter(bool json, bool hasSteps) {
  if (json) return std::make_unique<JsonPrinter>();
  return std::make_unique<CsvPrinter>(hasSteps);
}

}  // namespace nodal
