// The executable: the libraries that it needs and the symbols that it exports.
#include <gtest/gtest.h>

#include <map>
#include <set>
#include <sstream>
#include <string>

#include "tests/support/process.h"
#include "tests/support/text.h"

namespace faults {
namespace {

using testing_support::Lines;
using testing_support::Outcome;
using testing_support::Words;

struct Symbol {
  std::string size;
  std::string kind;
};

// The exported symbols of a program or library, by their names without versions.
std::map<std::string, Symbol> SymbolsOf(const char *file) {
  const Outcome outcome =
      testing_support::Run({.program = NM_PROGRAM, .arguments = {"-D", "-S", "-t", "d", "--defined-only", file}});
  EXPECT_EQ(outcome.exitStatus, 0) << outcome;
  std::map<std::string, Symbol> symbols;
  for (const std::string &line : Lines(outcome.output)) {
    const std::vector<std::string> words = Words(line);
    // nm lists each symbol version as an absolute symbol, of kind A.
    if (words.size() == 4 && words[2] != "A") symbols[words[3].substr(0, words[3].find('@'))] = {words[1], words[2]};
  }
  return symbols;
}

TEST(Binary, ShowsTheStatusTexts) {
  const std::map<std::string, Symbol> symbols = SymbolsOf(KESTREL_PROGRAM);
  ASSERT_TRUE(symbols.contains("HVC_ReturnStatusToString"));
  EXPECT_EQ(symbols.at("HVC_ReturnStatusToString").kind, "T");
  ASSERT_TRUE(symbols.contains("returnStatusStrs"));
#if !defined(KESTREL_SANITIZE)  // the sanitizers pad every object
  EXPECT_EQ(std::stoul(symbols.at("returnStatusStrs").size), 355 * sizeof(const char *));
#endif
}

TEST(Binary, ShowsWhetherThereAreSockets) {
  const std::map<std::string, Symbol> symbols = SymbolsOf(KESTREL_PROGRAM);
  ASSERT_TRUE(symbols.contains("isBusListEmpty"));
  EXPECT_EQ(symbols.at("isBusListEmpty").kind, "D");  // initialized data
#if !defined(KESTREL_SANITIZE)
  EXPECT_EQ(std::stoul(symbols.at("isBusListEmpty").size), 1u);
#endif
}

TEST(Binary, TheStandinHasAllThatTheLibraryHas) {
  const std::map<std::string, Symbol> standin = SymbolsOf(STANDIN_LIBRARY);
  const std::map<std::string, Symbol> library = SymbolsOf(PLATFORM_LIBRARY);
  ASSERT_TRUE(library.contains("NODAL_Get"));
  for (const auto &[name, symbol] : library)
    EXPECT_TRUE(standin.contains(name)) << name;
}

#if !defined(KESTREL_SANITIZE)
TEST(Binary, NeedsThePlatformLibraryAndTheLanguagesOwn) {
  const Outcome outcome = testing_support::Run({.program = READELF_PROGRAM, .arguments = {"-d", KESTREL_PROGRAM}});
  ASSERT_EQ(outcome.exitStatus, 0) << outcome;
  std::set<std::string> libraries;
  for (const std::string &line : Lines(outcome.output)) {
    const size_t name = line.find("Shared library: [");
    if (name != line.npos) libraries.insert(line.substr(name + 17, line.find(']') - name - 17));
  }
  EXPECT_TRUE(libraries.contains("libplatkit.so.1"));
  for (const char *expected : {"libplatkit.so.1", "libc.so.6", "libstdc++.so.6", "libgcc_s.so.1", "libm.so.6"}) {
    libraries.erase(expected);
  }
  EXPECT_TRUE(libraries.empty()) << *libraries.begin();
}
#endif

// kestrel is built without exceptions, so it must not call an operator new that throws. Where it allocates memory, it
// checks the returned pointer.
TEST(Binary, AllocatesWithoutExceptions) {
  const Outcome outcome = testing_support::Run({.program = NM_PROGRAM, .arguments = {"-D", "-u", KESTREL_PROGRAM}});
  ASSERT_EQ(outcome.exitStatus, 0) << outcome;
  for (const std::string &line : Lines(outcome.output)) {
    const std::string name = Words(line).back();
    const std::string_view symbol = std::string_view(name).substr(0, name.find('@'));
    const bool isNew = symbol.starts_with("_Znw") || symbol.starts_with("_Zna");
    EXPECT_TRUE(!isNew || symbol.ends_with("St9nothrow_t")) << name;
    EXPECT_FALSE(symbol.starts_with("_ZNSt7__cxx1112basic_string")) << name;
  }
}

// A wrapper of a library operation must see calls from the program, but no calls from within the library.
TEST(Library, CallsItsOwnOperationsDirectly) {
  const Outcome outcome =
      testing_support::Run({.program = READELF_PROGRAM, .arguments = {"-r", "-W", PLATFORM_LIBRARY}});
  ASSERT_EQ(outcome.exitStatus, 0) << outcome;
  for (const std::string &line : Lines(outcome.output)) {
    const bool isCall = line.find("JUMP_SLO") != line.npos || line.find("GLOB_DAT") != line.npos;
    for (const char *own : {" NODAL_", " Warning", " Str_Strcpy"}) {
      EXPECT_FALSE(isCall && line.find(own) != line.npos) << line;
    }
  }
}

}  // namespace
}  // namespace faults
