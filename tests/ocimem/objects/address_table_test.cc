// The registry of standalone instances by address: entries added, found, replaced and
// taken out in every order, held to a std::unordered_map doing the same.
#include "objects/address_table.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <unordered_map>
#include <vector>

namespace {

using ocimem::AddressTable;

// Addresses as the value pool hands them out: aligned, close together, reused.
const void* Address(std::size_t n) {
  return reinterpret_cast<const void*>(static_cast<std::uintptr_t>(0x7f0000001000ULL + 64 * n));
}

int* Value(std::size_t n) { return reinterpret_cast<int*>(static_cast<std::uintptr_t>(8 * n + 8)); }

TEST(AddressTable, EmptyTableFindsNothing) {
  AddressTable<int> table;
  EXPECT_EQ(table.Find(Address(1)), nullptr);
  EXPECT_EQ(table.Find(nullptr), nullptr);
  EXPECT_EQ(table.Erase(Address(1)), nullptr);
  EXPECT_EQ(table.Size(), 0U);
  int calls = 0;
  table.ForEach([&calls](int*) { ++calls; });
  EXPECT_EQ(calls, 0);
}

TEST(AddressTable, AddFindReplaceTakeOut) {
  AddressTable<int> table;
  EXPECT_EQ(table.Insert(Address(1), Value(1)), nullptr);
  EXPECT_EQ(table.Find(Address(1)), Value(1));
  EXPECT_EQ(table.Find(Address(2)), nullptr);
  // The same address again: the entry is replaced and the earlier value returned.
  EXPECT_EQ(table.Insert(Address(1), Value(7)), Value(1));
  EXPECT_EQ(table.Size(), 1U);
  EXPECT_EQ(table.Find(Address(1)), Value(7));
  EXPECT_EQ(table.Erase(Address(1)), Value(7));
  EXPECT_EQ(table.Find(Address(1)), nullptr);
  EXPECT_EQ(table.Erase(Address(1)), nullptr);
  EXPECT_EQ(table.Size(), 0U);
}

TEST(AddressTable, GrowsAndKeepsEveryEntry) {
  AddressTable<int> table;
  constexpr std::size_t kCount = 100000;
  for (std::size_t i = 0; i < kCount; ++i) table.Insert(Address(i), Value(i));
  EXPECT_EQ(table.Size(), kCount);
  for (std::size_t i = 0; i < kCount; ++i) ASSERT_EQ(table.Find(Address(i)), Value(i)) << i;
  std::size_t seen = 0;
  table.ForEach([&seen](int*) { ++seen; });
  EXPECT_EQ(seen, kCount);
  table.Clear();
  EXPECT_EQ(table.Size(), 0U);
  EXPECT_EQ(table.Find(Address(5)), nullptr);
  table.Insert(Address(5), Value(5));
  EXPECT_EQ(table.Find(Address(5)), Value(5));
}

// Entries taken out of the middle of runs, runs that go round the end of the slots among
// them: every entry left is still found, and none taken out is.
TEST(AddressTable, TakingOutKeepsTheRestReachable) {
  std::mt19937_64 rng(11);
  AddressTable<int> table;
  std::unordered_map<const void*, int*> model;
  for (int round = 0; round < 400000; ++round) {
    const std::size_t n = rng() % 3000;
    const void* key = Address(n);
    switch (rng() % 3) {
      case 0:
      case 1: {
        auto it = model.find(key);
        int* before = it == model.end() ? nullptr : it->second;
        ASSERT_EQ(table.Insert(key, Value(n + static_cast<std::size_t>(round))), before);
        model[key] = Value(n + static_cast<std::size_t>(round));
        break;
      }
      default: {
        auto it = model.find(key);
        int* before = it == model.end() ? nullptr : it->second;
        ASSERT_EQ(table.Erase(key), before) << round;
        if (it != model.end()) model.erase(it);
        break;
      }
    }
    ASSERT_EQ(table.Size(), model.size());
    if (round % 1000 == 0) {
      for (std::size_t k = 0; k < 3000; ++k) {
        auto it = model.find(Address(k));
        ASSERT_EQ(table.Find(Address(k)), it == model.end() ? nullptr : it->second)
            << round << " " << k;
      }
    }
  }
  // Emptied entry by entry: nothing left behind.
  std::vector<const void*> keys;
  for (const auto& [key, value] : model) keys.push_back(key);
  for (const void* key : keys) ASSERT_NE(table.Erase(key), nullptr);
  EXPECT_EQ(table.Size(), 0U);
  for (std::size_t k = 0; k < 3000; ++k) ASSERT_EQ(table.Find(Address(k)), nullptr);
}

// A table kept at its size by as many adds as takes (instances made and freed one by one,
// at addresses never used again) keeps every live entry and nothing else.
TEST(AddressTable, SteadyChurnKeepsEveryLiveEntry) {
  AddressTable<int> table;
  for (std::size_t i = 0; i < 20; ++i) table.Insert(Address(i), Value(i));
  for (std::size_t i = 20; i < 2000000; ++i) {
    ASSERT_EQ(table.Erase(Address(i - 20)), Value(i - 20));
    table.Insert(Address(i), Value(i));
  }
  EXPECT_EQ(table.Size(), 20U);
  for (std::size_t i = 2000000 - 20; i < 2000000; ++i) EXPECT_EQ(table.Find(Address(i)), Value(i));
  for (std::size_t i = 0; i < 2000000 - 20; i += 997) EXPECT_EQ(table.Find(Address(i)), nullptr);
}

}  // namespace
