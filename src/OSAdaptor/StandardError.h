// Texts for standard error that are no log lines.
#ifndef QBFOUNDATION_OSADAPTOR_STANDARDERROR_H
#define QBFOUNDATION_OSADAPTOR_STANDARDERROR_H

#include <string>
#include <string_view>

namespace qb {

/// Writes `text` to standard error at once, in one write where the stream is unbuffered. What can't be
/// written is lost.
void writeStandardError(std::string_view text);

/// Returns `format` filled as printf does.
[[gnu::format(printf, 1, 2)]] std::string printed(const char *format, ...);

} // namespace qb

#endif
