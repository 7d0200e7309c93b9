// C functions for characters and UTF-8 text.
#ifndef QBFOUNDATION_QBSTRINGADDITIONS_H
#define QBFOUNDATION_QBSTRINGADDITIONS_H

#include <QBFoundation/Runtime/Export.h>
#include <QBFoundation/Runtime/Types.h>

extern "C" {

/// Returns the length in bytes of the UTF-8 sequence at `position`: 1 to 6, 0 at the NUL that ends the text,
/// -1 for an invalid or cut sequence. Only the structure is checked, as of RFC 2279: overlong forms and
/// surrogates pass. `codePoint`, unless null, takes the character; 0 at the end, unchanged for -1.
QB_EXPORT int _getUtf8CharacterByteLength(const unsigned char *position, unsigned *codePoint);

/// Raises 100231 with the offset of `bad` in the text that starts at `start`. From `debug` 1 on the bytes
/// around it are shown on standard error.
QB_EXPORT void _raiseUtf8ErrorInString(const char *start, const char *bad);

/// Whether `character`, a byte's value, is one of A-Z, a-z, 0-9 and "_": 1 or 0. Any other number is none.
QB_EXPORT int isLegalNameChar(int character);
/// As above, "$" and "-" included.
QB_EXPORT int isLegalObjNameChar(int character);

/// Whether all characters of the text are digits from 0 to 9, as in the empty text: what deep access takes
/// for an array's index. NO for null.
QB_EXPORT BOOL isInteger(const char *text);
}

#endif
