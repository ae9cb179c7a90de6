// Captures what a piece of code prints.
#ifndef TESTS_SRC_TABLE_PRINTED_H
#define TESTS_SRC_TABLE_PRINTED_H

#include <gtest/gtest.h>

#include <cstdio>
#include <functional>
#include <string>

namespace kestrel {

inline std::string Printed(const std::function<void()> &print) {
  testing::internal::CaptureStdout();
  print();
  std::fflush(stdout);
  return testing::internal::GetCapturedStdout();
}

}  // namespace kestrel

#endif  // TESTS_SRC_TABLE_PRINTED_H
