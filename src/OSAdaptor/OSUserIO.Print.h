// Printing without string objects, for the logger.
#ifndef QBFOUNDATION_OSADAPTOR_OSUSERIO_PRINT_H
#define QBFOUNDATION_OSADAPTOR_OSUSERIO_PRINT_H

#include <cstdio>
#include <string_view>

namespace qb {

/// Whether a text stands by itself, or is a line with the newline that ends it.
enum class Printed { text, line };

/// Writes `text`, which has no NUL, in the terminal's character set to `file` and flushes it. One write
/// reaches the file where the stream is unbuffered.
void printText(std::string_view text, Printed as, std::FILE *file);
/// As above, to a descriptor, in one write where the system takes it in one.
void printText(std::string_view text, Printed as, int descriptor);

} // namespace qb

#endif
