// The MD5 digest of a run of bytes (RFC 1321): for identifiers, not for secrets.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

// Four words; written as 8 hexadecimal digits each, byte by byte from the lowest, they are the digest's usual text.
std::array<std::uint32_t, 4> md5Digest(std::string_view bytes);
