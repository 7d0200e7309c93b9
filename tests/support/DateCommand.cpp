#include "support/DateCommand.h"

#include "support/TemporaryDirectory.h"

#include <cstdio>
#include <memory>

std::vector<std::string> printedDates(const std::string &zone, const std::vector<std::string> &dates,
                                      const std::string &format) {
    std::string input;
    for (const std::string &date : dates)
        input += date + "\n";
    const TemporaryDirectory directory;
    directory.write("dates", input);
    const std::string command =
        "TZ='" + zone + "' LC_ALL=C date -f '" + directory / "dates" + "' '+" + format + "'";
    const std::unique_ptr<FILE, int (*)(FILE *)> output(::popen(command.c_str(), "r"), &::pclose);
    std::vector<std::string> lines;
    char line[256];
    while (output && std::fgets(line, sizeof line, output.get()))
        lines.emplace_back(line, std::char_traits<char>::length(line) - 1);
    return lines;
}
