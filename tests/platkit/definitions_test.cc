#include "platkit/definitions.h"

#include <gtest/gtest.h>

namespace platkit {
namespace {

// If this signature changes, the definitions of every older snapshot differ.
TEST(Definitions, SignatureIsStable) { EXPECT_EQ(OwnDefinitions().signature, "4422f1bd6109172efa6b987f929ad8ea"); }

TEST(Definitions, BuildIsAShortTextWithTheStartOfTheSignature) {
  const Definitions &own = OwnDefinitions();
  EXPECT_LE(own.build.size(), 20u);
  EXPECT_NE(own.build.find(own.signature.substr(0, 8)), std::string::npos);
}

}  // namespace
}  // namespace platkit
