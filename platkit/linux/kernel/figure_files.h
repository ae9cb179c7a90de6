// The forms in which the kernel writes figures into text files: one amount to a file, and lines of a key and an amount.
//
// Parsing is tolerant, since every kernel adds, drops and reorders lines: only the keys that are wanted are looked at,
// the first line of a key counts, and what does not parse costs that figure alone.
#ifndef PLATKIT_LINUX_KERNEL_FIGURE_FILES_H
#define PLATKIT_LINUX_KERNEL_FIGURE_FILES_H

#include <span>
#include <string_view>

#include "platkit/linux/files/host_files.h"
#include "platkit/linux/kernel/figure.h"

namespace platkit {

// The text without the blanks around it.
std::string_view Trim(std::string_view text);

// A decimal number and nothing else, blanks around it aside; false also if it does not fit 64 bits.
bool ParseNumber(std::string_view text, uint64_t &value);

// An amount, a limit, or "max". A limit so high that it stands for none is unlimited, and garbage is unreadable.
Figure ParseAmount(std::string_view text);

// Reads a file that holds one amount: absent if there is no such file.
Figure ReadAmount(HostFiles &files, const HostPath &path);

// "Key:\t12 kB" and "key 12" alike: the key, and the rest without the blanks around it. False if there is no key.
bool SplitKey(std::string_view line, std::string_view &key, std::string_view &rest);

// A key, and where its figure goes.
struct WantedFigure {
  std::string_view key;
  Figure *figure;
};

// Takes the figure of a line if it is wanted, and no earlier line gave it; else false. A unit of "kB" is passed over.
bool TakeFigure(std::string_view key, std::string_view rest, std::span<const WantedFigure> wanted);

// Reads a file of keys and figures, as far as there are figures to be found. Figures that have no line, or no file,
// stay absent; if the file cannot be read to its end, those that it did not give are unreadable.
void ReadFigures(HostFiles &files, const HostPath &path, std::span<const WantedFigure> wanted);

}  // namespace platkit

#endif  // PLATKIT_LINUX_KERNEL_FIGURE_FILES_H
