// Each public header compiles alone as C11 and C++20, does not redefine the program's macros, and defines only macros
// with the library's prefixes.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include "tests/platkit/compiler.h"

namespace {

// Short names that programs are likely to define.
const std::vector<std::string> kMacrosOfAProgram = {
    "STATUS", "NODE",  "FIELD", "TEXT",  "ENTRIES", "GAP",  "RECORD_BEGIN", "RECORD_END", "KB",      "BYTES",  "PAGES",
    "ID",     "FLAGS", "BOOL",  "COUNT", "NUMBER",  "NONE", "PERCENT",      "OK",         "FAILURE", "Record", "Field",
};

std::vector<std::string> PublicHeaders() {
  std::vector<std::string> names;
  for (const auto &entry : std::filesystem::directory_iterator(PLATKIT_SOURCE_DIR "/include/platkit"))
    names.push_back(entry.path().filename());
  return names;
}

// A program that defines all these macros, includes the header, and checks their values.
std::string ProgramWith(const std::string &header) {
  std::string source;
  for (const std::string &name : kMacrosOfAProgram)
    source += "#define " + name + " 7\n";
  source += "#include <platkit/" + header + ">\n";
  for (const std::string &name : kMacrosOfAProgram)
    source += "#if " + name + " != 7\n#error " + name + "\n#endif\n";
  return source + "extern int notEmpty;\n";
}

void ExpectToCompile(const std::string &compiler, const std::string &options) {
  if (!IsInstalled(compiler)) GTEST_SKIP() << compiler << " is not installed";
  const std::vector<std::string> headers = PublicHeaders();
  ASSERT_EQ(headers.size(), 7u);
  for (const std::string &header : headers) {
    const CompilerOutput output = Compile(compiler, options + " -Werror -fsyntax-only", ProgramWith(header));
    EXPECT_EQ(output.status, 0) << header << ":\n" << output.text;
  }
}

TEST(PublicHeaders, CompileAloneAsC) { ExpectToCompile(PLATKIT_C_COMPILER, "-x c -std=c11"); }

TEST(PublicHeaders, CompileAloneAsCxx) { ExpectToCompile(PLATKIT_C_COMPILER, "-x c++ -std=c++20"); }

TEST(PublicHeaders, CompileAloneAsCWithClang) { ExpectToCompile("clang", "-x c -std=c11"); }

TEST(PublicHeaders, CompileAloneAsCxxWithClang) { ExpectToCompile("clang", "-x c++ -std=c++20"); }

// The names of the macros that a program has.
std::set<std::string> MacrosOf(const std::string &source) {
  const CompilerOutput output = Compile(PLATKIT_C_COMPILER, "-x c -std=c11 -E -dM", source);
  EXPECT_EQ(output.status, 0) << output.text;
  std::set<std::string> names;
  const std::regex form("#define (\\w+)");
  for (std::sregex_iterator found(output.text.begin(), output.text.end(), form), end; found != end; ++found)
    names.insert((*found)[1]);
  return names;
}

TEST(PublicHeaders, DefineMacrosOfTheirOwnPrefixesOnly) {
  if (!IsInstalled(PLATKIT_C_COMPILER)) GTEST_SKIP() << PLATKIT_C_COMPILER << " is not installed";
  std::string all;
  for (const std::string &header : PublicHeaders())
    all += "#include <platkit/" + header + ">\n";
  const std::set<std::string> systems = MacrosOf("#include <stddef.h>\n#include <stdint.h>\n");
  const std::set<std::string> defined = MacrosOf(all);
  EXPECT_TRUE(defined.contains("NODAL_CACHE_SNAPSHOT"));
  for (const std::string &name : defined) {
    if (systems.contains(name)) continue;
    EXPECT_TRUE(name.starts_with("PLATKIT_") || name.starts_with("HVC_") || name.starts_with("NODAL_")) << name;
  }
}

}  // namespace
