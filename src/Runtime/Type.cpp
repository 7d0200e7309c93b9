#include <QBFoundation/Runtime/Type.h>

#include <QBFoundation/Runtime/Class.h>

#include <cxxabi.h>

#include <cstdlib>
#include <memory>
#include <new>

namespace qb {

namespace {

// As the status of a name (Itanium C++ ABI, 3.4).
constexpr int kNoMemory = -1;

std::string demangled(const std::type_info &info) {
    int status = 0;
    const std::unique_ptr<char, void (*)(void *)> name(
        abi::__cxa_demangle(info.name(), nullptr, nullptr, &status), std::free);
    if (status == kNoMemory)
        throw std::bad_alloc();
    return name ? name.get() : info.name();
}

std::string integerName(const Type &type) {
    if (type.width == 1)
        return "bool";
    return (type.isSigned ? "int" : "uint") + std::to_string(type.width) + "_t";
}

// In front of a pointer's name the word would say that what it points to is constant.
std::string pointerName(const Type &type) {
    const std::string pointee = demangled(*type.info);
    if (!type.isConst)
        return pointee + " *";
    return pointee.ends_with('*') ? pointee + " const *" : "const " + pointee + " *";
}

} // namespace

std::string nameOf(const Type &type) {
    switch (type.kind) {
    case Kind::none:
        return "void";
    case Kind::integer:
        return integerName(type);
    case Kind::character:
        return "char";
    case Kind::real:
        return type.width == 32 ? "float" : "double";
    case Kind::cString:
    case Kind::pointer:
        return pointerName(type);
    case Kind::function:
        return demangled(*type.info);
    case Kind::selector:
        return "SEL";
    case Kind::range:
        return "NSRange";
    case Kind::argList:
        return "...";
    case Kind::object:
    case Kind::classObject:
        break;
    }
    Class *const cls = type.cls();
    return cls == NSObject::cls() ? "id" : std::string(cls->nameView()) + " *";
}

bool passesUnchecked(const Type &given, const Type &wanted) {
    if (given.kind != wanted.kind)
        return given.kind == Kind::classObject && wanted.kind == Kind::object &&
               wanted.cls() == NSObject::cls();
    switch (given.kind) {
    case Kind::integer:
        return given.width == wanted.width && given.isSigned == wanted.isSigned;
    case Kind::real:
        return given.width == wanted.width;
    case Kind::cString:
    case Kind::pointer:
        return (wanted.isConst || !given.isConst) &&
               (*wanted.info == typeid(void) || *given.info == *wanted.info);
    case Kind::function:
        return *given.info == *wanted.info;
    case Kind::object:
    case Kind::classObject:
        return given.cls()->isSubclassOfClass(wanted.cls());
    default:
        return true;
    }
}

} // namespace qb
