#include "platkit/history/segment_writer.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "platkit/errno_status.h"
#include "platkit/history/frame_encoder.h"
#include "platkit/history/history_folder.h"
#include "platkit/history/segment_reader.h"

namespace platkit::history {
namespace {

HVC_ReturnStatus CheckText(std::string_view text) {
  if (text.size() > kMaxHostText) return HVC_LIMIT_EXCEEDED;
  return text.find('\0') == std::string_view::npos ? HVC_OK : HVC_BAD_PARAM;
}

HVC_ReturnStatus CheckHost(const HostHeader &host) {
  for (const std::string *text : {&host.definitions.signature, &host.definitions.build, &host.host, &host.kernel}) {
    const HVC_ReturnStatus status = CheckText(*text);
    if (status != HVC_OK) return status;
  }
  return HVC_OK;
}

HVC_ReturnStatus CheckSample(const Sample &sample) {
  if (sample.size() > kMaxEntries || sample.bytes() > kMaxSampleBytes) return HVC_LIMIT_EXCEEDED;
  for (size_t i = 1; i < sample.size(); ++i) {
    if (sample[i - 1].key == sample[i].key) return HVC_ALREADY_EXISTS;
  }
  return HVC_OK;
}

}  // namespace

SegmentWriter::SegmentWriter(int64_t keyInterval)
    : keyInterval_(keyInterval), encoder_(std::make_unique<FrameEncoder>()) {}

SegmentWriter::~SegmentWriter() { Close(); }

void SegmentWriter::Close() {
  if (fd_ >= 0) close(fd_);
  fd_ = -1;
  segmentBytes_ = 0;
  hasChain_ = false;
}

HVC_ReturnStatus SegmentWriter::Open(int folder, const char *name) {
  Close();
  HVC_ReturnStatus status = OpenSegmentFile(folder, name, O_RDWR | O_CREAT, fd_);
  if (status == HVC_OK) status = FindEnd(folder, name);
  if (status != HVC_OK) Close();
  return status;
}

HVC_ReturnStatus SegmentWriter::FindEnd(int folder, const char *name) {
  SegmentReader reader;
  const HVC_ReturnStatus status = reader.Open(folder, name);
  if (status != HVC_OK) return status;
  segmentBytes_ = reader.bytes();
  frames_ = static_cast<uint32_t>(reader.frames().size());
  removedBytes_ = 0;
  if (reader.damage().empty() || !reader.damage().back().isIncompleteEnd) return HVC_OK;
  removedBytes_ = reader.damage().back().bytes;
  segmentBytes_ -= removedBytes_;
  return ftruncate(fd_, static_cast<off_t>(segmentBytes_)) == 0 ? HVC_OK : StatusOfErrno(errno, HVC_WRITE_ERROR);
}

// A key frame is also due if the interval would be exceeded at the next sample. The time until that sample is therefore
// subtracted.
bool SegmentWriter::NeedsKeyFrame(const HostHeader &host, const SampleTime &time) const {
  const int64_t sinceKey = time.boot - keyTime_.boot;
  const int64_t toNext = int64_t{host.intervalMillis} * (kNanosInSecond / 1000);
  return !hasChain_ || deltaFrames_ == kMaxDeltaFrames || sinceKey < 0 || sinceKey > keyInterval_ - toNext ||
         host != host_;
}

HVC_ReturnStatus SegmentWriter::Append(const HostHeader &host, const SampleInfo &info, Sample &sample) {
  if (fd_ < 0) return HVC_BAD_PARAM;
  sample.Sort();
  HVC_ReturnStatus status = CheckHost(host);
  if (status == HVC_OK) status = CheckSample(sample);
  if (status != HVC_OK) return status;
  HostHeader copy = host;
  bool isKey = NeedsKeyFrame(host, info.time);
  if (!isKey) {
    status = encoder_->EncodeDelta(info, sample, last_);
    const uint64_t chainBytes = chainBytes_ + encoder_->frame().size();
    isKey = status == HVC_LIMIT_EXCEEDED ||  // for example, because no numbers of entries are left
            (status == HVC_OK && movedBytes_ + encoder_->movedBytes() > MaxMovedBytes(chainBytes));
  }
  if (isKey) status = encoder_->EncodeKey(host, info, sample);
  if (status == HVC_OK && sample.bytes() > MaxSampleBytes(segmentBytes_ + encoder_->frame().size()))
    status = HVC_LIMIT_EXCEEDED;
  if (status == HVC_OK) status = Write(encoder_->frame());
  if (status != HVC_OK) return status;
  encoder_->Accept();
  last_.Swap(sample);
  hasChain_ = true;
  host_ = std::move(copy);
  if (isKey) keyTime_ = info.time;
  deltaFrames_ = isKey ? 0 : deltaFrames_ + 1;
  chainBytes_ = (isKey ? 0 : chainBytes_) + frameBytes_;
  movedBytes_ = (isKey ? 0 : movedBytes_) + encoder_->movedBytes();
  return HVC_OK;
}

HVC_ReturnStatus SegmentWriter::AppendEnd(const SampleTime &time) {
  if (fd_ < 0) return HVC_BAD_PARAM;
  HVC_ReturnStatus status = encoder_->EncodeEnd(time);
  if (status == HVC_OK) status = Write(encoder_->frame());
  if (status == HVC_OK) hasChain_ = false;
  return status;
}

HVC_ReturnStatus SegmentWriter::Write(std::span<const std::byte> frame) {
  if (frames_ == kMaxFrames || frame.size() > kMaxSegmentBytes - segmentBytes_) return HVC_LIMIT_EXCEEDED;
  uint64_t position = segmentBytes_;
  for (std::span<const std::byte> rest = frame; !rest.empty();) {
    const ssize_t count = pwrite(fd_, rest.data(), rest.size(), static_cast<off_t>(position));
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) {
      const int error = errno;
      // If even this fails, the next frame overwrites the incomplete one.
      static_cast<void>(!ftruncate(fd_, static_cast<off_t>(segmentBytes_)));
      return StatusOfErrno(error, HVC_WRITE_ERROR);
    }
    rest = rest.subspan(static_cast<size_t>(count));
    position += static_cast<uint64_t>(count);
  }
  segmentBytes_ = position;
  frameBytes_ = frame.size();
  ++frames_;
  return HVC_OK;
}

HVC_ReturnStatus SegmentWriter::Sync() {
  if (fd_ < 0) return HVC_BAD_PARAM;
  return fsync(fd_) == 0 ? HVC_OK : StatusOfErrno(errno, HVC_WRITE_ERROR);
}

}  // namespace platkit::history
