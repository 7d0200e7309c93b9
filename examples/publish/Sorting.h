// Lists in the order of what their elements have under a key.
#ifndef PUBLISH_SORTING_H
#define PUBLISH_SORTING_H

#include <QBFoundation/QBFoundation.h>

namespace publish {

/// Returns the elements in the order of what they have under `key`, those without it last, and all of them
/// the other way round with ".REVERSE" behind the key. Dotted keys lead through dictionaries.
///
/// Texts are in the order of `language`, a locale's name such as "de_DE". Where the machine has no such
/// locale, without one (nil), and for other values than texts, see `caseInsensitiveSortedArrayByKey:`.
/// Elements without keys are an error.
NSArray *sortedByKey(NSArray *list, NSString *key, NSString *language);

} // namespace publish

#endif
