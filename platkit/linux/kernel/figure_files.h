// The two forms in which the kernel writes figures into text files: one figure per file, and lines of a key and a
// figure.
//
// Parsing is tolerant, because every kernel version adds, drops and reorders lines. Only wanted keys are parsed, and
// only the first line with a key counts. A malformed figure is unreadable and does not affect the others.
#ifndef PLATKIT_LINUX_KERNEL_FIGURE_FILES_H
#define PLATKIT_LINUX_KERNEL_FIGURE_FILES_H

#include <span>
#include <string_view>

#include "platkit/linux/files/host_files.h"
#include "platkit/linux/kernel/figure.h"

namespace platkit {

// Parses a decimal number; unreadable if the text has another form.
Figure ParseFigure(std::string_view text);

// Parses a number or "max". "max" means unlimited. A number just below 2^63 also means unlimited: control groups of
// version 1 print it if there is no limit.
Figure ParseAmount(std::string_view text);

// Reads a file that contains one amount. Absent if the file does not exist.
Figure ReadAmount(HostFiles &files, const HostPath &path);

// Splits "Key:\t12 kB" or "key 12" into the key and the rest, without the blanks around it. Returns false if there is
// no key.
bool SplitKey(std::string_view line, std::string_view &key, std::string_view &rest);

// A key, and the figure to store its value in.
struct WantedFigure {
  std::string_view key;
  Figure *figure;
};

// Stores the figure of a line, with or without the unit "kB". Returns false if the key is not wanted, or if an earlier
// line had it.
bool TakeFigure(std::string_view key, std::string_view rest, std::span<const WantedFigure> wanted);

// Marks all absent figures as unreadable.
void MarkAbsentUnreadable(std::span<const WantedFigure> wanted);

// Reads a file of keys and figures until all wanted keys are found. Figures without a line stay absent. If the file
// does not exist, all figures stay absent. If the file cannot be read to its end, missing figures are unreadable.
void ReadFigures(HostFiles &files, const HostPath &path, std::span<const WantedFigure> wanted);

}  // namespace platkit

#endif  // PLATKIT_LINUX_KERNEL_FIGURE_FILES_H
