// The error that `check` detects: a template outside the unnamed namespace whose argument is a constant inside it. Some
// compilers give the instances in all files the same weak name, and the linker keeps only one of them.
namespace linkage {

template <const int &number>
int Number() {
  return number;
}

namespace {
constexpr int kNumber = 1;
}

extern int (*const number)();
int (*const number)() = Number<kNumber>;

}  // namespace linkage
