#include "tide/chunks/cut_search.h"

#include <array>

namespace tide {

namespace {

constexpr std::size_t kHashBits = 64;
/// Bytes that a lane searches before the lanes move on together.
constexpr std::size_t kLane = 1024;
constexpr std::size_t kLanes = 4;

/// The 256 gear values: consecutive outputs of SplitMix64 from a fixed seed. They decide
/// where every chunk ends, so they never change.
std::array<std::uint64_t, 256> makeGearTable() {
    std::array<std::uint64_t, 256> table{};
    std::uint64_t state = 0x0123456789ABCDEF;
    for (std::uint64_t& entry : table) {
        state += 0x9E3779B97F4A7C15;
        std::uint64_t z = (state ^ (state >> 30U)) * 0xBF58476D1CE4E5B9;
        z = (z ^ (z >> 27U)) * 0x94D049BB133111EB;
        entry = z ^ (z >> 31U);
    }
    return table;
}

const std::array<std::uint64_t, 256>& gearTable() {
    static const std::array<std::uint64_t, 256> table = makeGearTable();
    return table;
}

std::uint64_t hashOfLast(const char* end, const std::uint64_t* gear) {
    std::uint64_t hash = 0;
    for (const char* at = end - kHashBits; at != end; ++at) {
        hash = (hash << 1U) + gear[static_cast<unsigned char>(*at)];
    }
    return hash;
}

/// Whether one of the lanes from `bytes` on holds a cut; `hash` enters as the hash before
/// the first lane and leaves, when there is none, as the hash after the last.
bool lanesHoldCut(const char* bytes, std::uint64_t mask, std::uint64_t& hash,
                  const std::uint64_t* gear) {
    std::uint64_t first = hash;
    std::uint64_t second = hashOfLast(bytes + kLane, gear);
    std::uint64_t third = hashOfLast(bytes + 2 * kLane, gear);
    std::uint64_t fourth = hashOfLast(bytes + 3 * kLane, gear);
    const auto takeIn = [gear](std::uint64_t before, const char* at) {
        return (before << 1U) + gear[static_cast<unsigned char>(*at)];
    };
    for (const char* at = bytes; at != bytes + kLane; ++at) {
        first = takeIn(first, at);
        second = takeIn(second, at + kLane);
        third = takeIn(third, at + 2 * kLane);
        fourth = takeIn(fourth, at + 3 * kLane);
        if ((first & mask) == 0 || (second & mask) == 0 || (third & mask) == 0 ||
            (fourth & mask) == 0) {
            return true;
        }
    }
    hash = fourth;
    return false;
}

}  // namespace

std::size_t scanByteByByte(std::string_view bytes, std::uint64_t mask, std::uint64_t& hash) {
    const std::uint64_t* const gear = gearTable().data();
    std::uint64_t rolling = hash;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        rolling = (rolling << 1U) + gear[static_cast<unsigned char>(bytes[i])];
        if ((rolling & mask) == 0) {
            return i + 1;
        }
    }
    hash = rolling;
    return 0;
}

std::size_t scanInLanes(std::string_view bytes, std::uint64_t mask, std::uint64_t& hash) {
    const std::uint64_t* const gear = gearTable().data();
    std::size_t searched = 0;
    while (bytes.size() - searched >= kLanes * kLane) {
        // A hit may be a later lane's, with an earlier one still ahead in another: the
        // plain search over these few bytes settles which comes first.
        if (lanesHoldCut(bytes.data() + searched, mask, hash, gear)) {
            break;
        }
        searched += kLanes * kLane;
    }
    const std::size_t rest = scanByteByByte(bytes.substr(searched), mask, hash);
    return rest == 0 ? 0 : searched + rest;
}

}  // namespace tide
