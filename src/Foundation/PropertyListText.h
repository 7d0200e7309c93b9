// Values as property-list text.
#ifndef QB_FOUNDATION_PROPERTYLISTTEXT_H
#define QB_FOUNDATION_PROPERTYLISTTEXT_H

#include <QBFoundation/Foundation/NSObject.h>

#include <cstddef>
#include <string>
#include <string_view>

namespace qb {

/// Appends a string as property lists hold it: as it stands when it may stand bare, else in double quotes.
///
/// Between quotes the quote, the backslash and the control characters that C has a letter for are escaped
/// with a backslash; other control bytes, and bytes that are not part of valid UTF-8, are three octal digits.
void appendPropertyListString(std::string &target, std::string_view text);

/// Containers inside more than this many others are described as "..."; so are those that hold themselves.
constexpr std::size_t kDeepestDescription = 512;

/// Appends a value as a property-list stream writes it, whatever it holds: this is the description of arrays,
/// dictionaries and sets. An enumerator is described like any other object, so that it is not used up.
void appendPropertyListText(std::string &target, id value);

} // namespace qb

#endif
