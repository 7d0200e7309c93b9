// Random trees of values.
#ifndef QBFOUNDATION_TESTS_SUPPORT_RANDOMVALUES_H
#define QBFOUNDATION_TESTS_SUPPORT_RANDOMVALUES_H

#include <QBFoundation/Foundation/NSObject.h>

#include <random>
#include <vector>

/// Makes trees of all classes of the value model, with edge values, and with objects that stand in several
/// places. For the length of one pool.
class RandomValues {
public:
    explicit RandomValues(std::uint32_t seed) : random_(seed) {}

    /// Returns a value, autoreleased, with at most `depth` containers inside each other.
    id value(unsigned depth);

private:
    id leaf();
    id container(unsigned depth);
    id number();
    id range();
    id text();
    id date();
    std::uint32_t upTo(std::uint32_t limit) {
        return std::uniform_int_distribution<std::uint32_t>(0, limit)(random_);
    }

    std::mt19937 random_;
    std::vector<id> earlier_; // to be mentioned again
};

#endif
