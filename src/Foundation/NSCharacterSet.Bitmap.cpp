// Sets of characters as bitmaps.
#include <QBFoundation/Foundation/NSCharacterSet.h>

#include <QBFoundation/Foundation/NSData.h>
#include <QBFoundation/Foundation/NSException.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <span>
#include <utility>
#include <vector>

namespace {

constexpr std::uint32_t kPlane = 0x10000;
constexpr std::uint32_t kPlanes = 17;
constexpr std::size_t kPlaneBytes = kPlane / 8;

using PlaneBits = std::array<std::uint8_t, kPlaneBytes>;

// Sets the bits of the characters from `first` to in front of `end` that lie in the plane; returns whether
// there are any.
bool markPlane(PlaneBits &bits, std::uint32_t plane, std::uint32_t first, std::uint32_t end) {
    const std::uint32_t from = std::max(first, plane * kPlane);
    const std::uint32_t to = std::min(end, (plane + 1) * kPlane);
    for (std::uint32_t character = from; character < to; ++character)
        bits[character % kPlane / 8] |= static_cast<std::uint8_t>(1 << (character % 8));
    return from < to;
}

// A place where the set begins and ends at once is none.
void toggle(std::vector<std::uint32_t> &edges, std::uint32_t place) {
    if (!edges.empty() && edges.back() == place)
        edges.pop_back();
    else
        edges.push_back(place);
}

void appendPlane(std::vector<std::uint32_t> &edges, std::uint32_t plane, std::span<const std::byte> bits) {
    bool isInside = false;
    for (std::uint32_t place = 0; place < kPlane; ++place) {
        const bool isMember = (bits[place / 8] >> (place % 8) & std::byte{1}) != std::byte{0};
        if (std::exchange(isInside, isMember) != isMember)
            toggle(edges, plane * kPlane + place);
    }
    if (isInside)
        toggle(edges, (plane + 1) * kPlane);
}

} // namespace

BOOL NSCharacterSet::hasMemberInPlane(std::uint8_t plane) const {
    const Edges all = edgesOf(*this);
    for (std::size_t i = 0; i < all.size(); i += 2)
        if (plane < kPlanes && std::max(all[i], plane * kPlane) < std::min(all[i + 1], (plane + 1) * kPlane))
            return YES;
    return NO;
}

NSData *NSCharacterSet::bitmapRepresentation() const {
    const Edges all = edgesOf(*this);
    NSMutableData *const data = NSMutableData::data();
    for (std::uint32_t plane = 0; plane < kPlanes; ++plane) {
        PlaneBits bits{};
        bool hasMember = plane == 0;
        for (std::size_t i = 0; i < all.size(); i += 2)
            hasMember = markPlane(bits, plane, all[i], all[i + 1]) || hasMember;
        const auto number = static_cast<std::uint8_t>(plane);
        if (hasMember && plane != 0)
            data->appendBytes(&number, 1);
        if (hasMember)
            data->appendBytes(bits.data(), kPlaneBytes);
    }
    return data;
}

BOOL NSCharacterSet::setUpWithBitmapRepresentation(NSData *data) {
    std::span<const std::byte> rest = data ? data->view() : std::span<const std::byte>();
    bool isBitmap = rest.empty() || rest.size() >= kPlaneBytes;
    Edges members;
    for (std::uint32_t plane = 0; isBitmap && !rest.empty();) {
        appendPlane(members, plane, rest.first(kPlaneBytes));
        rest = rest.subspan(kPlaneBytes);
        if (rest.empty())
            break;
        const auto next = std::to_integer<std::uint32_t>(rest.front());
        isBitmap = next > plane && next < kPlanes && rest.size() > kPlaneBytes;
        plane = next;
        rest = rest.subspan(1);
    }
    if (!isBitmap)
        throw InvalidArgumentException(
            "NSCharacterSet characterSetWithBitmapRepresentation: must have data that are such a bitmap.");
    setEdges(members);
    return YES;
}
