// One stream shared by several threads: every operation is whole.
#include <gtest/gtest.h>

#include <cstdint>
#include <set>
#include <thread>
#include <vector>

#include "streams/stream_test_support.h"
#include "tovfoundation/streams.h"

namespace {
constexpr int kThreads = 4;
constexpr int kPerThread = 2000;
}  // namespace

TEST(StreamThreads, SharedWriteStreamKeepsEveryValueWhole) {
  std::vector<unsigned char> block(kThreads * kPerThread * 4);
  Halyard::CStaticRamFilePort port(block.data(), static_cast<std::uint32_t>(block.size()),
                                   Halyard::kAccessReadWrite, 0);
  {
    Halyard::CWriteStream stream(port, Halyard::kHaldBigEndian, 64, 0, 0);
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
      threads.emplace_back([&stream, t] {
        for (int i = 0; i < kPerThread; ++i) stream.PutInt(t * 0x10000 + i);
      });
    }
    for (auto& thread : threads) thread.join();
    std::uint64_t pos = 0;
    stream.GetPosW(&pos);
    EXPECT_EQ(pos, block.size());
  }
  std::set<std::int32_t> seen;
  for (std::size_t at = 0; at < block.size(); at += 4) {
    seen.insert(static_cast<std::int32_t>((block[at] << 24) | (block[at + 1] << 16) |
                                          (block[at + 2] << 8) | block[at + 3]));
  }
  EXPECT_EQ(seen.size(), static_cast<std::size_t>(kThreads * kPerThread));
}

TEST(StreamThreads, SharedReadStreamHandsOutEveryValueOnce) {
  std::vector<unsigned char> block(kThreads * kPerThread * 4);
  for (std::size_t i = 0; i < block.size() / 4; ++i) {
    const auto v = static_cast<std::uint32_t>(i);
    block[i * 4] = static_cast<unsigned char>(v);
    block[i * 4 + 1] = static_cast<unsigned char>(v >> 8);
    block[i * 4 + 2] = static_cast<unsigned char>(v >> 16);
    block[i * 4 + 3] = static_cast<unsigned char>(v >> 24);
  }
  Halyard::CStaticRamFilePort port(block.data(), static_cast<std::uint32_t>(block.size()),
                                   Halyard::kAccessRead, 0);
  Halyard::CReadStream stream(port, Halyard::kHaldLittleEndian, 64, 0, 0);
  std::vector<std::vector<std::int32_t>> got(kThreads);
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&stream, &got, t] {
      for (int i = 0; i < kPerThread; ++i) {
        std::int32_t value = -1;
        stream.ReadInt(&value);
        got[t].push_back(value);
        if (i % 97 == 0) {
          unsigned char byte = 0;
          stream.PeekByte(&byte);
        }
      }
    });
  }
  for (auto& thread : threads) thread.join();
  std::set<std::int32_t> seen;
  for (const auto& values : got) seen.insert(values.begin(), values.end());
  EXPECT_EQ(seen.size(), static_cast<std::size_t>(kThreads * kPerThread));
  EXPECT_EQ(*seen.begin(), 0);
  EXPECT_EQ(*seen.rbegin(), kThreads * kPerThread - 1);
}
