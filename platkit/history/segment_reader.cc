#include "platkit/history/segment_reader.h"

#include <algorithm>

#include "platkit/history/sample_table.h"
#include "platkit/history/segment_file.h"

namespace platkit::history {
namespace {

SegmentReader::Frame FrameOf(const LoadedFrame &loaded) {
  const FrameHead &head = loaded.head;
  return {.start = loaded.position,
          .bytes = head.frameBytes,
          .isKey = head.kind == FrameKind::kKey,
          .isEnd = head.kind == FrameKind::kEnd,
          .followsDamage = false,
          .info = {.time = head.time, .availableBytes = head.availableBytes, .marks = head.marks},
          .entries = head.entries,
          .check = head.check,
          .base = head.base};
}

}  // namespace

struct SegmentReader::State {
  static constexpr size_t kNone = SIZE_MAX;

  HVC_ReturnStatus FindFrames();
  HVC_ReturnStatus AddDamage(uint64_t start, uint64_t end);
  void AddFrame();
  HVC_ReturnStatus Apply(size_t frame);

  SegmentFile file;
  std::vector<Frame> frames;
  std::vector<size_t> keyFrames;  // the key frame of each frame; kNone: it, or a frame in between, is missing
  std::vector<DamagedPart> damage;
  SampleTable table;
  LoadedFrame loaded = {};
  size_t applied = kNone;  // the frame whose sample is in the table
  size_t damaged = kNone;  // the last frame that could not be applied; frames that build on it cannot be applied either
};

SegmentReader::SegmentReader() : state_(std::make_unique<State>()) {}
SegmentReader::~SegmentReader() = default;

HVC_ReturnStatus SegmentReader::Open(int folder, const char *name) {
  const HVC_ReturnStatus status = state_->file.Open(folder, name);
  return status == HVC_OK ? state_->FindFrames() : status;
}

HVC_ReturnStatus SegmentReader::Open(int fd) {
  const HVC_ReturnStatus status = state_->file.Open(fd);
  return status == HVC_OK ? state_->FindFrames() : status;
}

HVC_ReturnStatus SegmentReader::State::FindFrames() {
  frames.clear();
  keyFrames.clear();
  damage.clear();
  applied = damaged = kNone;
  uint64_t position = 0, damageStart = 0;
  while (position < file.size()) {
    HVC_ReturnStatus status = file.LoadHead(position, loaded);
    if (status == HVC_SNAPSHOT_DAMAGED) {
      status = file.FindMagic(position + 1, position);
      if (status != HVC_OK) return status;
      continue;
    }
    if (status != HVC_OK) return status;
    if (frames.size() == kMaxFrames) return HVC_LIMIT_EXCEEDED;
    AddFrame();
    frames.back().followsDamage = position > damageStart;
    if (position > damageStart) damage.push_back({damageStart, position - damageStart, false});
    position += loaded.head.frameBytes;
    damageStart = position;
  }
  if (damageStart == file.size()) return HVC_OK;
  const HVC_ReturnStatus status = AddDamage(damageStart, file.size());
  if (status != HVC_OK) return status;
  return frames.empty() && !damage.back().isIncompleteEnd ? HVC_NOT_A_SNAPSHOT : HVC_OK;
}

HVC_ReturnStatus SegmentReader::State::AddDamage(uint64_t start, uint64_t end) {
  std::span<std::byte> bytes;
  const HVC_ReturnStatus status = file.Load(start, sizeof(FrameHead), bytes);
  if (status != HVC_OK) return status;
  damage.push_back({start, end - start, IsPossibleCutFrame(bytes, end - start)});
  return HVC_OK;
}

void SegmentReader::State::AddFrame() {
  const Frame frame = FrameOf(loaded);
  const size_t index = frames.size();
  size_t keyFrame = kNone;
  if (frame.isKey) {
    keyFrame = index;
  } else if (index > 0 && frame.base == frames.back().check && keyFrames.back() != kNone &&
             index - keyFrames.back() <= kMaxDeltaFrames) {
    keyFrame = keyFrames.back();
  }
  frames.push_back(frame);
  keyFrames.push_back(keyFrame);
}

HVC_ReturnStatus SegmentReader::State::Apply(size_t frame) {
  applied = kNone;
  HVC_ReturnStatus status = file.LoadHead(frames[frame].start, loaded);
  if (status != HVC_OK) return status;
  if (loaded.head.check != frames[frame].check) return HVC_SNAPSHOT_DAMAGED;
  status = table.Apply(file, loaded);
  if (status == HVC_OK) applied = frame;
  if (status == HVC_SNAPSHOT_DAMAGED) damaged = frame;
  return status;
}

HVC_ReturnStatus SegmentReader::Read(size_t frame, Sample &sample) {
  State &state = *state_;
  if (state.frames[frame].isEnd) return HVC_NOT_FOUND;
  size_t next = state.keyFrames[frame];
  if (next == State::kNone) return HVC_SNAPSHOT_DAMAGED;
  if (state.damaged != State::kNone && next <= state.damaged && state.damaged <= frame) return HVC_SNAPSHOT_DAMAGED;
  if (state.applied != State::kNone && state.applied >= next && state.applied <= frame) next = state.applied + 1;
  for (; next <= frame; ++next) {
    const HVC_ReturnStatus status = state.Apply(next);
    if (status != HVC_OK) return status;
  }
  return state.table.CopyTo(sample);
}

HVC_ReturnStatus SegmentReader::ReadHost(size_t frame, HostHeader &host) {
  State &state = *state_;
  if (state.frames[frame].isEnd) return HVC_NOT_FOUND;
  const size_t key = state.keyFrames[frame];
  if (key == State::kNone) return HVC_SNAPSHOT_DAMAGED;
  const HVC_ReturnStatus status = state.file.LoadHead(state.frames[key].start, state.loaded);
  if (status != HVC_OK) return status;
  if (state.loaded.head.check != state.frames[key].check) return HVC_SNAPSHOT_DAMAGED;
  return LoadHost(state.file, state.loaded, host);
}

void SegmentReader::Select(const KeyFilter *filter) {
  state_->table.Select(filter);
  state_->applied = state_->damaged = State::kNone;
}

const std::vector<SegmentReader::Frame> &SegmentReader::frames() const { return state_->frames; }
const std::vector<DamagedPart> &SegmentReader::damage() const { return state_->damage; }

std::vector<size_t> SegmentReader::InOrderOfTime() const {
  std::vector<size_t> order;
  for (size_t i = 0; i < frames().size(); ++i) {
    if (!frames()[i].isEnd) order.push_back(i);
  }
  std::ranges::stable_sort(order, {}, [this](size_t i) { return frames()[i].info.time.wall; });
  return order;
}

size_t SegmentReader::lostParts() const {
  return static_cast<size_t>(std::ranges::count(state_->damage, false, &DamagedPart::isIncompleteEnd));
}

bool SegmentReader::hasBase(size_t frame) const { return state_->keyFrames[frame] != State::kNone; }
uint64_t SegmentReader::bytes() const { return state_->file.size(); }
const HostHeader &SegmentReader::host() const { return state_->table.host(); }

}  // namespace platkit::history
