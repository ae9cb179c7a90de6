// The two forms in which differences between snapshots are printed.
#ifndef NODAL_SNAPSHOT_DIFF_PRINTER_H
#define NODAL_SNAPSHOT_DIFF_PRINTER_H

#include <memory>

#include "tools/nodal/snapshot/snapshot_diff.h"

namespace nodal {

// Prints changes as they are found, so that none is kept in memory.
class DiffPrinter {
 public:
  virtual ~DiffPrinter() = default;
  virtual void Begin(const OpenedSnapshot &from, const OpenedSnapshot &to) = 0;
  virtual void Show(const Change &change) = 0;
  virtual void End() = 0;
};

// Prints text for people, or nothing if there is no change.
std::unique_ptr<DiffPrinter> MakeDiffTextPrinter();

// Prints a JSON object with one change per line.
std::unique_ptr<DiffPrinter> MakeDiffJsonPrinter();

}  // namespace nodal

#endif  // NODAL_SNAPSHOT_DIFF_PRINTER_H
