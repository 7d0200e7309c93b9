// Printing without string objects, for the logger.
#ifndef QBFOUNDATION_OSADAPTOR_OSUSERIO_PRINT_H
#define QBFOUNDATION_OSADAPTOR_OSUSERIO_PRINT_H

#include <cstdio>
#include <string_view>

namespace qb {

/// Writes `text`, which has no NUL, in the terminal's character set to `file` and flushes it. One write
/// reaches the file where the stream is unbuffered.
void printText(std::string_view text, std::FILE *file);
/// As above, to a descriptor, in one write where the system takes it in one.
void printText(std::string_view text, int descriptor);

} // namespace qb

#endif
