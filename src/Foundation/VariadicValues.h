// The arguments of a C function with a format, as checked values.
#ifndef QBFOUNDATION_FOUNDATION_VARIADICVALUES_H
#define QBFOUNDATION_FOUNDATION_VARIADICVALUES_H

#include <QBFoundation/Runtime/Value.h>

#include <cstdarg>
#include <string_view>
#include <vector>

namespace qb {

/// Returns the arguments that a restricted format asks for, as its length letters say. Where the format ends
/// to be one, nothing more is taken: such a format is written as it stands.
std::vector<Value> variadicValues(std::string_view format, std::va_list arguments);

} // namespace qb

#endif
