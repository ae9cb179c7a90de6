#include "tools/nodal/history/verify_history.h"

#include <new>

#include "platkit/history/moment.h"
#include "tools/nodal/history/moment_file.h"
#include "tools/nodal/snapshot/problems.h"

namespace nodal {
namespace {

using platkit::history::DamagedPart;
using platkit::history::History;
using platkit::history::Sample;
using platkit::history::SecondsOf;
using platkit::history::SegmentName;
using platkit::history::SegmentReader;
using platkit::history::TimeText;

class HistoryCheck {
 public:
  explicit HistoryCheck(const std::string &folder) { OpenHistory(folder, history_); }

  void Run() {
    for (const SegmentName name : history_.segments())
      CheckSegment(name.text());
  }

  size_t problems() const { return problems_.count(); }

  std::string Summary() const {
    std::string text = Plural(segments_, "segment") + ", " + Plural(samples_, "sample") + ", ";
    if (lost_ > 0) text += Plural(lost_, "lost sample") + ", ";
    return text + (problems() == 0 ? "no problems" : Plural(problems(), "problem"));
  }

 private:
  void CheckSegment(const std::string &name) {
    SegmentReader segment;
    const HVC_ReturnStatus status = segment.Open(history_.folder(), name.c_str());
    if (status == HVC_NOT_FOUND) return;  // the segment was removed after the folder was listed
    ++segments_;
    if (status != HVC_OK) return problems_.Report(name, StatusText(status));
    for (const DamagedPart &part : segment.damage())
      ReportDamage(name, part);
    for (size_t i = 0; i < segment.frames().size(); ++i)
      CheckSample(name, segment, i);
    ReportLost(name);
  }

  void ReportDamage(const std::string &name, const DamagedPart &part) {
    const std::string where = name + ": byte " + std::to_string(part.start);
    const std::string size = Plural(part.bytes, "byte");
    if (part.isIncompleteEnd) {
      Print(where + ": " + size + " of an incomplete frame (it is being written, or the recorder was killed)\n");
    } else {
      problems_.Report(where, Plural(part.bytes, "damaged byte"));
    }
  }

  void CheckSample(const std::string &name, SegmentReader &segment, size_t frame) {
    Sample sample;
    const HVC_ReturnStatus status = segment.Read(frame, sample);
    if (status == HVC_NOT_FOUND) return;  // the frame marks the end of a recording
    if (status == HVC_NO_MEMORY) throw std::bad_alloc();
    if (status == HVC_OK) {
      ReportLost(name);
      ++samples_;
      return;
    }
    const int64_t second = SecondsOf(segment.frames()[frame].info.time.wall);
    if (lostHere_++ == 0) firstLost_ = second;
    lastLost_ = second;
  }

  // Reports consecutive lost samples as one problem.
  void ReportLost(const std::string &name) {
    if (lostHere_ == 0) return;
    problems_.Report(
        name, "lost " + Plural(lostHere_, "sample") + ", from " + TimeText(firstLost_) + " to " + TimeText(lastLost_));
    lost_ += lostHere_;
    lostHere_ = 0;
  }

  History history_;
  Problems problems_;
  size_t segments_ = 0;
  size_t samples_ = 0;
  size_t lost_ = 0;
  size_t lostHere_ = 0;
  int64_t firstLost_ = 0;
  int64_t lastLost_ = 0;
};

}  // namespace

bool VerifyHistory(const std::string &folder) {
  HistoryCheck check(folder);
  check.Run();
  Print(Printable(folder) + ": " + check.Summary() + "\n");
  return check.problems() == 0;
}

}  // namespace nodal
