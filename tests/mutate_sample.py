# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""A program of one small file for scripts/mutate, and the changes that are to be found in it."""

# Every program that the script builds, the unit tests but of one file.
BUILD = """
cmake_minimum_required(VERSION 3.25)
project(sample LANGUAGES CXX)
find_package(GTest REQUIRED)
set(CMAKE_CXX_STANDARD 20)
include_directories(${PROJECT_SOURCE_DIR})
add_library(rules STATIC report/sample.cpp)
add_executable(unit_tests tests/unit/report/sample_test.cpp)
target_link_libraries(unit_tests rules GTest::gtest_main)
if(EXISTS "${PROJECT_SOURCE_DIR}/reader")
  add_library(reader OBJECT reader/rules/sample.cpp)
  add_executable(reader_tests tests/unit/reader/rules/sample_test.cpp)
  target_link_libraries(reader_tests reader GTest::gtest_main)
endif()
foreach(name window_tests diagnostic_test_build halvik-diagnostic halvik-upload halvik-diagnostic-window)
  add_executable(${name} main.cpp)
endforeach()
"""

HEADER = """
#include <string>
int smaller(int left, int right);
int counted();
bool isOpen(char sign);
std::string named(const std::string& name);
int untested(int value);
"""

SAMPLE = """
#include "report/sample.h"

namespace {

constexpr int unused = 7;

void note(int& counter) {
  ++counter;
}

std::string joined(const std::string& first, const std::string& second) {
  return first + second;
}

}  // namespace

// Neither 1 < 2 nor "3 && 4" is code.
int smaller(int left, int right) {
  if (left < right) {
    return left;
  }
  return right;
}

int counted() {
  int counter = 0;
  note(counter);
  return counter;
}

bool isOpen(char sign) {
  return sign == '(' || sign == '[';
}

std::string named(const std::string& name) {
  return joined("name < 1: ", name);
}

int untested(int value) {
  return value + 1;
}
"""

TEST = """
#include <gtest/gtest.h>

#include "report/sample.h"

TEST(Sample, TakesTheSmallerOne) {
  EXPECT_EQ(smaller(1, 2), 1);
  EXPECT_EQ(smaller(4, 3), 3);
}

TEST(Sample, Counts) {
  EXPECT_EQ(counted(), 1);
}

TEST(Sample, KnowsWhatIsOpen) {
  EXPECT_TRUE(isOpen('('));
  EXPECT_TRUE(isOpen('['));
  EXPECT_FALSE(isOpen(')'));
}

TEST(Sample, Names) {
  EXPECT_EQ(named("N"), "name < 1: N");
}
"""

# The kind of a change, its function, and the line that it leaves.
EXPECTED = {
    ("constant", "unused", "constexpr int unused = 6;"),
    ("constant", "unused", "constexpr int unused = 8;"),
    ("statement", "note", "static_cast<void>(0);"),
    ("arguments", "joined", "return second + first;"),
    ("statement", "smaller", ""),
    ("condition", "smaller", "if (!(left < right)) {"),
    ("comparison", "smaller", "if (left <= right) {"),
    ("comparison", "smaller", "if (left > right) {"),
    ("statement", "smaller", "static_cast<void>(0);"),
    ("constant", "counted", "int counter = 1;"),
    ("call", "counted", "static_cast<void>(0);"),
    ("condition", "isOpen", "return !(sign == '(' || sign == '[');"),
    ("condition", "isOpen", "return sign == '(' && sign == '[';"),
    ("comparison", "isOpen", "return sign != '(' || sign == '[';"),
    ("comparison", "isOpen", "return sign == '(' || sign != '[';"),
    ("constant", "isOpen", "return sign == static_cast<decltype('(')>('(' + 1) || sign == '[';"),
    ("constant", "isOpen", "return sign == '(' || sign == static_cast<decltype('[')>('[' + 1);"),
    ("call", "named", 'return "name < 1: ";'),
    ("arguments", "named", 'return joined(name, "name < 1: ");'),
    ("constant", "untested", "return value - 1;"),
    ("constant", "untested", "return value + 0;"),
    ("constant", "untested", "return value + 2;"),
}

READER = {
    "reader/rules/sample.cpp": "int doubled(int value) {\n  return value + value;\n}\n",
    "tests/unit/reader/rules/sample_test.cpp": """
#include <gtest/gtest.h>

int doubled(int value);

TEST(Reader, Doubles) {
  EXPECT_EQ(doubled(2), 4);
}
""",
}
