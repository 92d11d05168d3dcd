#include "paths/network_address.h"

#include <gtest/gtest.h>

#include <bit>

namespace marrowbench {
namespace {

NetworkAddress ofBytes(std::uint8_t a, std::uint8_t b, std::uint8_t c, std::uint8_t d) {
  return {{a, b, c, d}};
}

// Words as they stand in this machine's memory.
NetworkAddress ofWords(const std::array<std::uint16_t, 8>& words) {
  return std::bit_cast<NetworkAddress>(words);
}

TEST(FormatNetworkAddress, UnknownAddressIsEmpty) {
  EXPECT_TRUE(formatNetworkAddress({}).isEmpty());
  EXPECT_TRUE(formatNetworkAddress(ofWords({0, 1, 2, 3, 4, 5, 6, 7})).isEmpty());
  EXPECT_TRUE(formatNetworkAddress(ofBytes(0, 0, 1, 2)).isEmpty());
}

TEST(FormatNetworkAddress, Ipv4HasThreeDigitsPerByte) {
  EXPECT_EQ(formatNetworkAddress(ofBytes(192, 168, 1, 20)).view(), "192.168.001.020");
  EXPECT_EQ(formatNetworkAddress(ofBytes(10, 0, 0, 5)).view(), "010.000.000.005");
  EXPECT_EQ(formatNetworkAddress(ofBytes(0, 1, 255, 255)).view(), "000.001.255.255");
}

TEST(FormatNetworkAddress, LastWordDecidesOnTheForm) {
  NetworkAddress address = ofWords({0x0101, 2, 3, 4, 5, 6, 7, 0});
  EXPECT_EQ(formatNetworkAddress(address).view().substr(0, 8), "001.001.");
  EXPECT_EQ(formatNetworkAddress(address).length(), 15U);
  address.bytes[15] = address.bytes[14] = 1;
  EXPECT_EQ(formatNetworkAddress(address).view(), "101:02:03:04:05:06:07:101");
}

TEST(FormatNetworkAddress, WordsAreUpperCaseHexadecimalWithoutShortening) {
  EXPECT_EQ(formatNetworkAddress(ofWords({0x20FE, 0, 0, 0, 0xABCD, 0xF, 0x10, 0xFFFF})).view(),
            "20FE:00:00:00:ABCD:0F:10:FFFF");
}

}  // namespace
}  // namespace marrowbench
