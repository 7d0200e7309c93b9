#include "Foundation/ArchiveCircles.h"

#include "Foundation/ArchiveFormat.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <vector>

namespace qb::archive {

namespace {

// Takes a count off the front; what is malformed is read when its object is, and refused then.
std::uint64_t takeCount(std::string_view &values) {
    std::uint64_t count = 0;
    for (unsigned shift = 0; !values.empty() && shift < 64; shift += 7) {
        const auto byte = static_cast<unsigned char>(values.front());
        values.remove_prefix(1);
        count |= static_cast<std::uint64_t>(byte & 0x7F) << shift;
        if (byte < 0x80)
            break;
    }
    return count;
}

void skip(std::string_view &values, std::uint64_t length) {
    values.remove_prefix(static_cast<std::size_t>(std::min<std::uint64_t>(length, values.size())));
}

// Takes values off the front, up to and with the next object, whose index it returns.
std::optional<std::uint64_t> takeObject(std::string_view &values) {
    while (!values.empty()) {
        const auto tag = static_cast<Tag>(values.front());
        values.remove_prefix(1);
        if (tag == Tag::real)
            skip(values, sizeof(double));
        else if (tag == Tag::bytes)
            skip(values, takeCount(values));
        else if (tag == Tag::object)
            return takeCount(values);
        else if (tag != Tag::nil && tag != Tag::nullObject)
            takeCount(values);
    }
    return std::nullopt;
}

} // namespace

// Goes into each object once, along a way of its own, because the way may be as long as the archive.
bool haveCircle(std::size_t count, const std::function<std::string_view(std::size_t index)> &valuesOf) {
    enum class State : unsigned char { unseen, onTheWay, done };
    struct Step {
        std::size_t index;
        std::string_view values; // not looked at yet
    };
    std::vector<State> states(count, State::unseen);
    std::vector<Step> way;
    const auto goInto = [&](std::size_t index) {
        states[index] = State::onTheWay;
        way.push_back({index, valuesOf(index)});
    };
    for (std::size_t first = 0; first < count; ++first) {
        if (states[first] == State::unseen)
            goInto(first);
        while (!way.empty()) {
            const std::optional<std::uint64_t> next = takeObject(way.back().values);
            if (!next) {
                states[way.back().index] = State::done;
                way.pop_back();
            } else if (*next < count && states[*next] == State::onTheWay) {
                return true;
            } else if (*next < count && states[*next] == State::unseen) {
                goInto(static_cast<std::size_t>(*next));
            }
        }
    }
    return false;
}

} // namespace qb::archive
