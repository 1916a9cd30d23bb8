// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "app/options.h"

#include <gtest/gtest.h>

namespace app {
namespace {

OptionTable table() {
  return makeOptionTable("halvik.example", "diagnostic.halvik.example");
}

OptionValues valuesOf(std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), "/usr/bin/halvik-diagnostic");
  return getValues(parseArguments(arguments), table());
}

TEST(Options, ParsesFlagsAndLeavesTheOthersAtTheirDefaults) {
  const ParsedArguments parsed = parseArguments({"program", "-s", "-c"});
  EXPECT_EQ(parsed, (ParsedArguments{{"-s", true}, {"-c", true}}));
  EXPECT_EQ(getValues(parsed, table()), (OptionValues{{"domainSig", NullMarker()},
                                                      {"silentSig", true},
                                                      {"internetSig", false},
                                                      {"outputSig", NullMarker()},
                                                      {"consoleSig", true},
                                                      {"skvSig", false},
                                                      {"noskvSig", false},
                                                      {"helpSig", false}}));
}

TEST(Options, TakesTheTextBehindTheLastEqualsSign) {
  const std::vector<std::pair<std::vector<std::string>, std::string>> cases{
      {{"--output=/tmp/r.txt", "-s"}, "/tmp/r.txt"},
      {{"-s", "-o=/tmp/x"}, "/tmp/x"},
      {{"-o="}, ""},
      {{"-o=a=b"}, "b"},
      {{"-o=a="}, ""},
      {{"-o==b"}, "b"},
      {{"-o=a", "-o=b"}, "b"},
      {{"-o=a", "--output=b"}, "b"},
      {{"--output=b", "-o=a"}, "b"},
      {{"-o=\xff\xfe"}, "\xff\xfe"},
  };
  for (const auto& [arguments, expected] : cases) {
    const OptionValues values = valuesOf(arguments);
    ASSERT_NE(textOf(values, "outputSig"), nullptr) << arguments.front();
    EXPECT_EQ(*textOf(values, "outputSig"), expected) << arguments.front();
  }
}

TEST(Options, AreMatchedWhole) {
  for (const char* argument :
       {"-S", "--silent=yes", "-s=", "-sc", "silent", "s", "--silen", "-psn_0_123"}) {
    EXPECT_FALSE(isSet(valuesOf({argument}), "silentSig")) << argument;
  }
  const OptionValues values = valuesOf({"-o", "file"});
  EXPECT_EQ(textOf(values, "outputSig"), nullptr);
}

TEST(Options, ThreeSpellingsAskForHelp) {
  for (const char* argument : {"-?", "-h", "--help"}) {
    EXPECT_TRUE(isSet(valuesOf({argument}), "helpSig")) << argument;
  }
  EXPECT_FALSE(isSet(valuesOf({"-help"}), "helpSig"));
}

TEST(Options, HaveNoValuesAtAllWithoutAnyArgument) {
  EXPECT_TRUE(valuesOf({}).empty());
  EXPECT_TRUE(valuesOf({"stray"}).empty());
  EXPECT_FALSE(isSet(valuesOf({}), "silentSig"));
  EXPECT_EQ(textOf(valuesOf({}), "domainSig"), nullptr);
}

TEST(Options, HaveAllDefaultsAfterAnUnknownArgument) {
  EXPECT_EQ(valuesOf({"-x"}).size(), 8U);
}

TEST(Options, AnEmptyArgumentIsARangeError) {
  EXPECT_THROW(parseArguments({"program", "-s", ""}), std::out_of_range);
}

TEST(Options, TheUsageTextHasALineForEachOption) {
  EXPECT_EQ(generateHelp(table()),
            "-d= --domain=, A specific URL to target with tests (e.g. halvik.example)\n\n"
            "-s --silent, Automatically run tests in silent mode (will not show the UI or new "
            "windows; defaults to -i output)\n\n"
            "-i --internet, Output all results to diagnostic.halvik.example; destination URL will "
            "print to console as 'url=URL'\n\n"
            "-o= --output=, Output to a file, which will print to console as 'outputFile=FILE'; "
            "can be a full path, make sure to use \"quotes\" if needed\n\n"
            "-c --console, Output all results to console as text\n\n"
            "--skv, Force the Skivra tests to be performed\n\n"
            "--noskv, Skip the Skivra tests even if it's installed\n\n"
            "-h --help -?, Display this usage statement\n\n");
}

}  // namespace
}  // namespace app
