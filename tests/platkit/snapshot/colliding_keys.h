// Keys that have the same hash, and so the same slot in the index.
#ifndef TESTS_PLATKIT_SNAPSHOT_COLLIDING_KEYS_H
#define TESTS_PLATKIT_SNAPSHOT_COLLIDING_KEYS_H

#include <cdb.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cctype>
#include <string>
#include <vector>

#include "platkit/snapshot/format.h"
#include "tests/platkit/scratch.h"

namespace platkit::snapshot {

// Two texts that give the same hash when they are appended to a text with the hash `hash`.
inline std::pair<std::string, std::string> CollidingPair(uint32_t hash) {
  for (char a = 'a'; a <= 'z'; ++a) {
    for (char b = 'a'; b <= 'z'; ++b) {
      for (char other = 'a'; other < a; ++other) {
        const std::string first = {a, b};
        const std::string start = {other};
        const uint32_t last = (Hash(start, hash) * 33) ^ Hash(first, hash);
        if (last < 128 && std::isalnum(static_cast<int>(last)) != 0) return {first, start + static_cast<char>(last)};
      }
    }
  }
  ADD_FAILURE() << "no pair";
  return {};
}

// At least `count` different keys with the same hash: the prefix, followed by letters and digits.
inline std::vector<std::string> CollidingKeys(const std::string &prefix, size_t count) {
  std::vector<std::string> keys = {prefix};
  while (keys.size() < count) {
    const auto [first, second] = CollidingPair(Hash(keys[0]));
    std::vector<std::string> longer;
    for (const std::string &key : keys) {
      longer.push_back(key + first);
      longer.push_back(key + second);
    }
    keys = std::move(longer);
  }
  return keys;
}

// Writes a snapshot with these keys and the header, as SnapshotWriter does, but without the limit on collisions.
// REQUIRES: the keys are in ascending order and come before the header.
inline void WriteWithoutLimit(const std::string &path, const std::vector<std::string> &keys) {
  cdb_make database;
  const auto add = [&](std::string_view key, std::string_view value) {
    const auto size = [](std::string_view text) { return static_cast<unsigned>(text.size()); };
    ASSERT_EQ(cdb_make_add(&database, key.data(), size(key), value.data(), size(value)), 0);
  };
  const auto checked = [](std::string value) {
    const uint32_t check = Check(std::as_bytes(std::span(value)));
    return value.append(reinterpret_cast<const char *>(&check), sizeof check);
  };
  const int fd = open(path.c_str(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
  ASSERT_EQ(cdb_make_start(&database, fd), 0);
  add(kVersionKey, kVersionText);
  add(kIndexCheckKey, std::string(kIndexCheckBytes, '\0'));
  for (const std::string &key : keys)
    add(key, checked("R"));
  for (const std::string_view key : {kBuildKey, kHostKey, kSignatureKey, kTimeKey})
    add(key, checked("H"));
  ASSERT_EQ(cdb_make_finish(&database), 0);
  close(fd);

  std::string file = Contents(path);
  std::string checks = "C";
  for (uint32_t table = 0; table < kTables; ++table) {
    uint32_t place[2];
    file.copy(reinterpret_cast<char *>(place), sizeof place, table * sizeof place);
    const uint32_t check = Check(std::as_bytes(std::span(file)).subspan(place[0], size_t{place[1]} * kSlotBytes));
    checks.append(reinterpret_cast<const char *>(&check), sizeof check);
  }
  file.replace(kIndexCheckValue, kIndexCheckBytes, checked(checks));
  testing_support::WriteFile(path, file);
}

}  // namespace platkit::snapshot

#endif  // TESTS_PLATKIT_SNAPSHOT_COLLIDING_KEYS_H
