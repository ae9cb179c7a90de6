// The sources of samples for the live view.
#ifndef NODAL_TOP_FEED_H
#define NODAL_TOP_FEED_H

#include <cstddef>
#include <memory>
#include <string>

#include "platkit/source.h"

namespace nodal::top {

class Feed {
 public:
  virtual ~Feed() = default;

  // Takes the next sample or, with `isBack`, the previous one of a history. Returns false if there is none.
  virtual bool Step(bool isBack) = 0;

  // Tells the feed how many groups the last sample had. With many groups, a feed may take cheaper samples.
  virtual void AdaptTo(size_t groups) { static_cast<void>(groups); }

  // The present sample. It changes only with Step.
  virtual platkit::Source &Now() = 0;

  // The previous sample if the feed still has it, else null.
  virtual platkit::Source *Before() { return nullptr; }

  // The seconds between the previous sample and the present one; 0 if unknown.
  virtual double Seconds() const = 0;

  virtual std::string Host() const = 0;  // the host's name, printable
  virtual std::string Time() const = 0;  // the time of the present sample, in UTC
  // The kind of the samples, in words for the user.
  virtual std::string Kind() const = 0;

  virtual bool isLive() const { return false; }
  virtual bool isHistory() const { return false; }

  // The path that opens the present sample if it belongs to a history, else empty.
  virtual std::string Moment() const { return ""; }

  // A problem of the last step, for the user.
  virtual std::string Problem() const { return ""; }
};

// These functions throw a Failure if the source cannot be opened.
std::unique_ptr<Feed> OpenSnapshotFeed(const std::string &path);
// `path` is FOLDER or FOLDER@TIME.
std::unique_ptr<Feed> OpenHistoryFeed(const std::string &path);

// Opens the source that --cache or --root names, or the running host if both are empty.
std::unique_ptr<Feed> OpenFeed(const std::string &cache, const std::string &root);

}  // namespace nodal::top

#endif  // NODAL_TOP_FEED_H
