// Checks that the names of tests/tool/growth.sh collide: their growth says nothing if they do not.
#include <gtest/gtest.h>

#include <fstream>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace {

std::vector<std::pair<std::string, std::string>> Parts() {
  std::ifstream file(KORVEL_COLLIDING_PARTS);
  std::vector<std::pair<std::string, std::string>> parts;
  for (std::string first, second; file >> first >> second;) parts.emplace_back(first, second);
  return parts;
}

TEST(CollidingParts, AllNamesHaveTheSameHash) {
#ifndef __GLIBCXX__
  GTEST_SKIP() << "the parts are made for the hash function of libstdc++";
#endif
  const auto parts = Parts();
  ASSERT_EQ(parts.size(), 11u) << "2048 names";
  const auto name = [&](unsigned number) {
    std::string text;
    for (const auto& [first, second] : parts) {
      text += number % 2 == 0 ? first : second;
      number /= 2;
    }
    return text;
  };
  for (unsigned number = 1; number < 2048; ++number) {
    ASSERT_NE(name(number), name(0));
    ASSERT_EQ(std::hash<std::string>{}(name(number)), std::hash<std::string>{}(name(0))) << name(number);
  }
}

}  // namespace
