#include "support/DateCommand.h"

#include "support/CommandOutput.h"
#include "support/TemporaryDirectory.h"

#include <sstream>

std::vector<std::string> printedDates(const std::string &zone, const std::vector<std::string> &dates,
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
