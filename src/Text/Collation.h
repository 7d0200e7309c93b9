// Keys for sorting many texts as the locale orders them.
#ifndef QB_TEXT_COLLATION_H
#define QB_TEXT_COLLATION_H

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace qb::text {

/// Makes keys of texts for the collation in force (LC_COLLATE).
///
/// What a `strxfrm` key has of each level is put together from what the locale was once asked about each
/// plain character: letters, digits, a few signs, and the letters of Western Europe in UTF-8. Only texts with
/// others cost a `strxfrm`.
class CollationKeys {
public:
    /// Returns those of the locale in force, which are kept until they are asked for under another one.
    static std::shared_ptr<CollationKeys> inForce();

    /// Appends a key for the first level, on which texts of other letters differ. As far as two keys differ,
    /// their bytes order as `strcoll` orders the texts. The text has no NUL in it and one behind it. No byte
    /// of the key is 0.
    void appendFirstLevel(std::string_view text, std::vector<char> &keys);

    /// Appends a key for the next levels, such as case and accents, which orders texts with the same key for
    /// the first as `strcoll` does, as far as it differs. Returns false, with anything appended, for a text
    /// that has none: with other characters than plain ones, or with some that the first level ignores.
    bool appendNextLevels(std::string_view text, std::vector<char> &keys) const;

private:
    // What stands for a plain character in keys of the first level.
    struct Codes {
        std::uint8_t bytes[2]; // no more than the character has
        std::uint8_t count;    // `kNotPlain`: it is no such character
    };

    // How the first level of a `strxfrm` key begins for some plain character.
    struct Weight {
        std::string bytes; // not the beginning of another one
        std::uint8_t code; // what stands for it in keys, even; odd ones stand for what lies in between
    };

    explicit CollationKeys(std::string sign);

    template <class Use>
    bool forEachPlain(std::string_view text, Use use) const;
    bool appendPlain(std::string_view text, std::vector<char> &keys) const;
    bool appendCodes(std::string_view firstLevel, std::vector<char> &keys) const;
    void setWeights(std::vector<std::string> different);

    std::string sign_;         // differs from that of another locale
    std::uint8_t single_[256]; // the places of characters in the following, by their byte
    std::uint8_t paired_[256]; // by the byte behind the one for the letters of Western Europe
    std::vector<Codes> codes_;
    std::vector<std::string> nextLevels_[2]; // as in a `strxfrm` key
    bool hasNextLevels_ = true;
    std::vector<Weight> weights_;   // in ascending order
    std::uint8_t weightsUpTo_[256]; // how many begin with a byte up to this one
    std::vector<char> buffer_;
};

} // namespace qb::text

#endif
