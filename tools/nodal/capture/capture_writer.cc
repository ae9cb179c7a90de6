#include "tools/nodal/capture/capture_writer.h"

#include <vector>

#include "tools/nodal/capture/source_header.h"
#include "tools/nodal/support/output.h"
#include "tools/nodal/support/text.h"

namespace nodal {
namespace {

void Check(const std::string &where, HVC_ReturnStatus status) {
  if (status != HVC_OK) throw Failure(where, status);
}

}  // namespace

void CaptureWriter::AddHeader(platkit::snapshot::Header header) {
  if (pseudonyms_) AnonymizeHeader(header, *pseudonyms_);
  Check("header", writer_.AddHeader(header));
}

void CaptureWriter::Add(const Answer &answer) {
  const std::string path = PathOf(*answer.node, ArgumentsOf(answer));
  if (answer.status != HVC_OK) {
    AddUnreadable(path, answer);
    return;
  }
  totals_.nodes.insert(answer.node);
  if (answer.asRecord) {
    AddRecord(path, answer);
  } else {
    AddList(path, answer);
  }
}

void CaptureWriter::AddUnreadable(const std::string &path, const Answer &answer) {
  if (answer.status == HVC_NOT_FOUND && !answer.isReportedMissing) return;
  Check(path, writer_.AddFailure(path, answer.status));
  if (answer.status != HVC_NOT_FOUND) ++totals_.unreadable[StatusText(answer.status)];
}

void CaptureWriter::AddRecord(const std::string &path, const Answer &answer) {
  std::string record = answer.record;
  const auto bytes = std::as_writable_bytes(std::span(record));
  if (pseudonyms_) pseudonyms_->Replace(*answer.node->record, bytes);
  Check(path, writer_.AddRecord(path, bytes));
  ++totals_.records;
}

void CaptureWriter::AddList(const std::string &path, const Answer &answer) {
  std::vector<int64_t> integers;
  std::vector<std::string> texts;
  for (const Argument &entry : answer.entries) {
    if (entry.kind == ParamKind::kInt) {
      integers.push_back(entry.integer);
    } else {
      texts.push_back(Replaced(answer.node->entry.what, entry).text);
    }
  }
  const bool hasIntegers = answer.node->entry.kind == ParamKind::kInt;
  Check(path, hasIntegers ? writer_.AddIntegers(path, integers) : writer_.AddTexts(path, texts));
  ++totals_.lists;
}

Arguments CaptureWriter::ArgumentsOf(const Answer &answer) {
  Arguments arguments;
  for (size_t i = 0; i < answer.arguments.size(); ++i)
    arguments.push_back(Replaced(answer.node->arguments[i].what, answer.arguments[i]));
  return arguments;
}

Argument CaptureWriter::Replaced(std::string_view what, const Argument &instance) {
  return pseudonyms_ ? pseudonyms_->Of(what, instance) : instance;
}

}  // namespace nodal
