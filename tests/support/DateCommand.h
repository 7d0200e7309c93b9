// The system's own idea of dates.
#ifndef QBFOUNDATION_TESTS_SUPPORT_DATECOMMAND_H
#define QBFOUNDATION_TESTS_SUPPORT_DATECOMMAND_H

#include "support/CommandOutput.h"
#include "support/TemporaryDirectory.h"

#include <sstream>

/// Returns what the command date prints of each of the dates, in that zone and format; fewer lines when it
/// does not know one of them.
inline std::vector<std::string> printedDates(const std::string &zone, const std::vector<std::string> &dates,
                                             const std::string &format) {
    std::string input;
    for (const std::string &date : dates)
        input += date + "\n";
    const TemporaryDirectory directory;
    directory.write("dates", input);
    std::istringstream output(
        outputOf("TZ='" + zone + "' LC_ALL=C date -f '" + directory / "dates" + "' '+" + format + "'"));
    std::vector<std::string> lines;
    for (std::string line; std::getline(output, line);)
        lines.push_back(line);
    return lines;
}

#endif
