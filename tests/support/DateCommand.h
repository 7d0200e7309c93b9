// The system's own idea of dates.
#ifndef QBFOUNDATION_TESTS_SUPPORT_DATECOMMAND_H
#define QBFOUNDATION_TESTS_SUPPORT_DATECOMMAND_H

#include <string>
#include <vector>

/// Returns what the command date prints of each of the dates, in that zone and format; fewer lines when it
/// does not know one of them.
std::vector<std::string> printedDates(const std::string &zone, const std::vector<std::string> &dates,
                                      const std::string &format);

#endif
