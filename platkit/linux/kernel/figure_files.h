// The two forms in which the kernel writes figures into text files: one figure per file, and lines of a key and a
// figure.
//
// Parsing is tolerant, because every kernel version adds, drops and reorders lines. Only wanted keys are looked at, the
// first line of a key counts, and a figure that does not parse is unreadable without any effect on the others.
#ifndef PLATKIT_LINUX_KERNEL_FIGURE_FILES_H
#define PLATKIT_LINUX_KERNEL_FIGURE_FILES_H

#include <span>
#include <string_view>

#include "platkit/linux/files/host_files.h"
#include "platkit/linux/kernel/figure.h"

namespace platkit {

// Parses a decimal number; unreadable if the text is none.
Figure ParseFigure(std::string_view text);

// Parses a number or "max". "max" is unlimited, and so is a number just below 2^63, which control groups of version 1
// use for "no limit".
Figure ParseAmount(std::string_view text);

// Reads a file that holds one amount. Absent if the file does not exist.
Figure ReadAmount(HostFiles &files, const HostPath &path);

// Splits "Key:\t12 kB" or "key 12" into the key and the rest, without the blanks around it. False if there is no key.
bool SplitKey(std::string_view line, std::string_view &key, std::string_view &rest);

// A key, and where its figure goes.
struct WantedFigure {
  std::string_view key;
  Figure *figure;
};

// Stores the figure of a line, with or without the unit "kB". False if the key is not wanted, or an earlier line had
// it.
bool TakeFigure(std::string_view key, std::string_view rest, std::span<const WantedFigure> wanted);

// Makes absent figures unreadable.
void MarkAbsentUnreadable(std::span<const WantedFigure> wanted);

// Reads a file of keys and figures until all that are wanted were found. A figure without a line stays absent, and so
// do all if the file does not exist. If the file cannot be read to its end, figures that were not found are unreadable.
void ReadFigures(HostFiles &files, const HostPath &path, std::span<const WantedFigure> wanted);

}  // namespace platkit

#endif  // PLATKIT_LINUX_KERNEL_FIGURE_FILES_H
