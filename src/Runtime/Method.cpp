#include <QBFoundation/Runtime/Method.h>

#include <QBFoundation/Foundation/NSException.h>
#include <QBFoundation/Runtime/Class.h>
#include <QBFoundation/Runtime/MethodTable.h>
#include <QBFoundation/Runtime/Value.h>

#include <vector>

namespace qb {

namespace {

// How a reason names an operation: "QBTally addString:".
std::string placeOf(const Method &method) {
    return std::string(method.owner() ? method.owner()->nameView() : "") + " " + method.selector()->text();
}

} // namespace

std::string Method::signature() const {
    std::string text = nameOf(resultType()) + " (";
    for (std::uint32_t i = 0; i < parameterCount_; ++i)
        text += (i ? ", " : "") + nameOf(parameterType(i));
    return text + ")";
}

Value Method::invoke(id receiver, const Value *values, std::size_t count) const {
    if (count == parameterCount_ && (!hasVariableValues_ || values[count - 1].kind() == Kind::argList))
        return listed_(*this, receiver, values);
    const std::size_t named = parameterCount_ - (hasVariableValues_ ? 1U : 0U);
    if (!hasVariableValues_ || count < named)
        throw InvalidArgumentException(placeOf(*this) + " must have " + std::to_string(named) +
                                       (named == 1 ? " argument." : " arguments."));
    std::vector<Value> all(values, values + named);
    all.emplace_back(ArgList(values + named, static_cast<std::uint32_t>(count - named)));
    return listed_(*this, receiver, all.data());
}

// As pointers to members are laid out (Itanium C++ ABI, 2.3): the function's address, or when that is odd one
// more than its place in the virtual table; and by how much `this` is moved.
Method::TypedEntry Method::bareMember(const void *virtualTable) const {
    struct MemberPointer {
        std::uintptr_t function;
        std::ptrdiff_t adjustment;
    };
    const auto member = target<MemberPointer>();
    if (!isBareMember_ || member.adjustment != 0)
        return nullptr;
    if (member.function % 2 == 0)
        return reinterpret_cast<TypedEntry>(member.function);
    TypedEntry entry;
    std::memcpy(&entry, static_cast<const char *>(virtualTable) + (member.function - 1), sizeof entry);
    return entry;
}

bool Method::isFoundFrom(Class *cls) const {
    const Method *found =
        isClassMethod_ ? cls->methodForSelector(selector_) : cls->instanceMethodForSelector(selector_);
    return found == this;
}

void detail::throwWrongArgument(const Method &method, std::size_t index) {
    throw InvalidArgumentException(placeOf(method) + " must have an argument " + std::to_string(index + 1) +
                                   " that is a " +
                                   nameOf(method.parameterType(static_cast<std::uint32_t>(index))) + ".");
}

Ref<NSObject> detail::constructFor(id asked) {
    return static_cast<Class *>(asked)->construct();
}

} // namespace qb
