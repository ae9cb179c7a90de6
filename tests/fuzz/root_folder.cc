#include "tests/fuzz/root_folder.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <sstream>

#include "platkit/linux/files/host_files.h"
#include "tests/fuzz/nodal.h"

namespace fuzz {
namespace {

namespace fs = std::filesystem;
using platkit::ArchiveEntry;
using platkit::FileDescriptor;

// The parts of a path; none if the path leaves the folder.
std::vector<std::string> PartsOf(const std::string &path) {
  std::vector<std::string> parts;
  std::istringstream in(path.substr(0, path.find('\0')));
  for (std::string part; std::getline(in, part, '/');) {
    if (part == "..") return {};
    if (!part.empty() && part != ".") parts.push_back(part);
  }
  return parts;
}

// Opens a folder below the root. Creates missing folders and follows no symbolic links.
FileDescriptor OpenFolder(const std::string &root, const std::vector<std::string> &parts) {
  FileDescriptor folder(open(root.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  for (const std::string &part : parts) {
    mkdirat(folder.get(), part.c_str(), 0755);
    folder = FileDescriptor(openat(folder.get(), part.c_str(), O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (!folder.isOpen()) break;
  }
  return folder;
}

void WriteFile(int folder, const std::string &name, const std::string &content) {
  const FileDescriptor file(
      openat(folder, name.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, 0644));
  if (file.isOpen()) static_cast<void>(!write(file.get(), content.data(), content.size()));
}

}  // namespace

RootFolder::RootFolder(const std::string &name) : path_(ScratchFolder() + "/" + name) {
  fs::remove_all(path_);
  fs::create_directory(path_);
}

void RootFolder::Put(const std::vector<ArchiveEntry> &entries) const {
  for (const ArchiveEntry &entry : entries)
    Put(entry);
}

void RootFolder::Put(const ArchiveEntry &entry) const {
  std::vector<std::string> parts = PartsOf(entry.path);
  if (parts.empty()) return;
  const std::string name = parts.back();
  parts.pop_back();
  const FileDescriptor folder = OpenFolder(path_, parts);
  if (!folder.isOpen()) return;
  switch (entry.kind) {
    case ArchiveEntry::Kind::kFile: return WriteFile(folder.get(), name, entry.content);
    case ArchiveEntry::Kind::kFolder: mkdirat(folder.get(), name.c_str(), 0755); break;
    case ArchiveEntry::Kind::kLink: static_cast<void>(!symlinkat(entry.content.c_str(), folder.get(), name.c_str()));
  }
}

}  // namespace fuzz
