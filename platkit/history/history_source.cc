#include "platkit/history/history_source.h"

#include <cstring>

#include "platkit/history/history.h"
#include "platkit/history/moment.h"
#include "platkit/path.h"
#include "platkit/snapshot/list_value.h"

namespace platkit {
namespace {

using history::Entry;
using history::ValueType;

class MomentSource : public Source {
 public:
  HVC_ReturnStatus Open(const char *path) { return ReadMoment(path, moment_); }

  HVC_ReturnStatus Get(const Node &node, Arguments arguments, std::span<std::byte> record) override {
    return source_.Get(node, arguments, record);
  }
  HVC_ReturnStatus List(const Node &node, Arguments arguments, ParamList &list) override {
    return source_.List(node, arguments, list);
  }
  const Definitions &definitions() const override { return source_.definitions(); }

 private:
  Moment moment_;
  SampleSource source_{moment_.sample, moment_.host.definitions};
};

// The status of a node without a value: the status of its failed read, or HVC_NOT_FOUND.
HVC_ReturnStatus StatusOfAbsent(const history::Sample &sample, std::string_view path) {
  PathWriter key;
  key.Literal(snapshot::kFailurePrefix).Literal(path);
  Entry entry;
  if (!key.ok() || !sample.Find(key.view(), entry)) return HVC_NOT_FOUND;
  return snapshot::FailureIn({entry.type, entry.payload});
}

}  // namespace

HVC_ReturnStatus SampleSource::Find(const Node &node, Arguments arguments, Entry &entry) const {
  PathWriter path;
  WritePath(node, arguments, path);
  if (!path.ok()) return HVC_NOT_FOUND;  // longer than any key
  return sample_.Find(path.view(), entry) ? HVC_OK : StatusOfAbsent(sample_, path.view());
}

HVC_ReturnStatus SampleSource::Get(const Node &node, Arguments arguments, std::span<std::byte> record) {
  Entry entry;
  const HVC_ReturnStatus status = Find(node, arguments, entry);
  if (status != HVC_OK) return status;
  if (entry.type != ValueType::kRecord) return HVC_SNAPSHOT_DAMAGED;
  if (entry.payload.size() != record.size()) return HVC_WRONG_SIZE;
  std::memcpy(record.data(), entry.payload.data(), record.size());
  return HVC_OK;
}

HVC_ReturnStatus SampleSource::List(const Node &node, Arguments arguments, ParamList &list) {
  Entry entry;
  const HVC_ReturnStatus status = Find(node, arguments, entry);
  return status == HVC_OK ? snapshot::AddEntries(node, {entry.type, entry.payload}, list) : status;
}

HVC_ReturnStatus ReadMoment(const char *path, Moment &moment) {
  const std::optional<history::MomentPath> parts = history::SplitMoment(path);
  if (!parts) return HVC_NOT_FOUND;
  history::History history;
  HVC_ReturnStatus status = history.Open(parts->folder.c_str());
  if (status == HVC_NOT_A_SNAPSHOT) return HVC_NOT_FOUND;  // the path of a missing file can also contain an '@'
  history::History::Span span;
  if (status == HVC_OK) status = history.FindSpan(span);
  if (status != HVC_OK) return status;
  const std::optional<int64_t> second = history::ParseTime(parts->time, span.last);
  if (!second) return HVC_BAD_PARAM;
  return history.Read(*second, moment.sample, moment.info, moment.host);
}

HVC_ReturnStatus OpenMoment(const char *path, std::unique_ptr<Source> &source) {
  auto opened = std::make_unique<MomentSource>();
  const HVC_ReturnStatus status = opened->Open(path);
  if (status == HVC_OK) source = std::move(opened);
  return status;
}

}  // namespace platkit
