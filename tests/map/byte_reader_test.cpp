#include "map/format/byte_reader.h"

#include <gtest/gtest.h>

#include <array>

namespace orvel {
namespace {

TEST(ByteReader, ReadsLittleEndianAndStopsAtTheEnd) {
  const std::array<uint8_t, 10> data{0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0x07, 0x08, 0x09, 0xFF};
  ByteReader r(data);
  uint8_t a = 0;
  uint16_t b = 0;
  uint32_t c = 0, d = 0;
  ASSERT_TRUE(r.u8(a) && r.u16le(b) && r.u24le(c) && r.u32le(d));
  EXPECT_EQ(a, 0x01);
  EXPECT_EQ(b, 0x0302);
  EXPECT_EQ(c, 0x060504u);
  EXPECT_EQ(d, 0xFF090807u);
  EXPECT_TRUE(r.atEnd());
  EXPECT_FALSE(r.u8(a));
  EXPECT_EQ(a, 0x01);  // untouched on failure
}

TEST(ByteReader, FailedReadLeavesCursorAndOutput) {
  const std::array<uint8_t, 3> data{0xAA, 0xBB, 0xCC};
  ByteReader r(data, 1);
  uint32_t v = 7;
  EXPECT_FALSE(r.u24le(v));
  EXPECT_FALSE(r.u32le(v));
  EXPECT_EQ(v, 7u);
  EXPECT_EQ(r.pos(), 1u);
  uint16_t w = 0;
  EXPECT_TRUE(r.u16le(w));
  EXPECT_EQ(w, 0xCCBB);
}

}  // namespace
}  // namespace orvel
