// Keys for sorting many texts as the locale orders them.
#ifndef QB_TEXT_COLLATION_H
#define QB_TEXT_COLLATION_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace qb::text {

/// Makes keys of the first level of the collation in force (LC_COLLATE), on which texts of other letters
/// differ. What is left to the further levels, such as case and accents, is for `strcoll` to decide.
///
/// Keys order, byte by byte, as `strcoll` orders the texts, as far as the keys differ at all. Those of
/// letters, digits and blanks are put together from what the locale was once asked about each; only texts
/// with other characters cost a `strxfrm`. The keys of one object go together.
class CollationKeys {
public:
    /// Learns the weights of the plain characters from the locale in force.
    CollationKeys();

    /// Appends the key of `text`, which has no NUL in it and one behind it, to `keys`. No byte of it is 0.
    void append(std::string_view text, std::vector<char> &keys);

private:
    // How the first level of a `strxfrm` key begins for some plain character.
    struct Weight {
        std::string bytes; // not the beginning of another one
        std::uint8_t code; // what stands for it in keys, even; odd ones stand for what lies in between
    };

    bool appendPlain(std::string_view text, std::vector<char> &keys) const;
    void appendTransformed(std::string_view firstLevel, std::vector<char> &keys) const;

    std::uint8_t codes_[256];       // of characters
    std::vector<Weight> weights_;   // in ascending order
    std::uint8_t weightsUpTo_[256]; // how many begin with a byte up to this one
    std::vector<char> buffer_;
};

} // namespace qb::text

#endif
