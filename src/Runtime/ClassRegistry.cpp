#include "Runtime/ClassRegistry.h"

#include <QBFoundation/Foundation/NSException.h>
#include <QBFoundation/Foundation/NSString.h>
#include <QBFoundation/Runtime/Class.h>

#include <exception>
#include <map>
#include <string>
#include <string_view>

namespace qb {

namespace {

using ClassTable = std::map<std::string_view, Class *>;

// Never destroyed: classes live as long as the process.
ClassTable &table() {
    static ClassTable &classes = *new ClassTable;
    return classes;
}

// Registrations link themselves in while static objects are still being constructed, in any order.
constinit const ClassRegistration *newestRegistration = nullptr;
constinit const ClassRegistration *newestBuilt = nullptr;

const ListedClass *listedClass(std::string_view name) {
    for (const ListedClass &listed : libraryClasses())
        if (name == listed.name)
            return &listed;
    return nullptr;
}

// Makes the class, unless it is there or being made. Returns whether there is nothing left to try.
bool isBuilt(const ClassRegistration &registration, std::exception_ptr &failure) {
    if (std::exchange(registration.isMade, true))
        return true;
    try {
        registration.cls();
    } catch (const InvalidArgumentException &) { // what it is made of is wrong, or its name is taken
        failure = std::current_exception();
    } catch (...) {
        failure = std::current_exception();
        registration.isMade = false;
    }
    return registration.isMade;
}

// Makes the registered classes that were not made yet, so that they can be found by their names. One that
// can't be made keeps no other from being made. What makes a class may come back here. Returns why one was
// not made.
std::exception_ptr buildRegisteredClasses() {
    const ClassRegistration *const newest = newestRegistration, *const built = newestBuilt;
    std::exception_ptr failure;
    bool areBuilt = true;
    for (const ClassRegistration *one = newest; one != built; one = one->next)
        areBuilt = isBuilt(*one, failure) && areBuilt;
    newestBuilt = areBuilt ? newest : built;
    return failure;
}

Class *classNamed(std::string_view name) {
    if (const ListedClass *listed = listedClass(name))
        return listed->cls();
    auto found = table().find(name);
    if (found != table().end())
        return found->second;
    const std::exception_ptr failure = buildRegisteredClasses();
    found = table().find(name); // which is there whatever has become of the others
    if (found == table().end() && failure)
        std::rethrow_exception(failure);
    return found == table().end() ? nullptr : found->second;
}

} // namespace

ClassRegistration::ClassRegistration(Class *(*function)()) : cls(function), next(newestRegistration) {
    newestRegistration = this;
}

void enterClass(Class *cls, ClassMaker maker) {
    const bool isReserved = maker == ClassMaker::client && listedClass(cls->nameView());
    if (isReserved || !table().emplace(cls->nameView(), cls).second)
        throw InvalidArgumentException("Class " + std::string(cls->nameView()) +
                                       " must have a name that is not taken.");
}

std::vector<Class *> allClasses() {
    if (const std::exception_ptr failure = buildRegisteredClasses())
        std::rethrow_exception(failure);
    for (const ListedClass &listed : libraryClasses())
        listed.cls();
    std::vector<Class *> result;
    for (const auto &[name, cls] : table())
        result.push_back(cls);
    return result;
}

} // namespace qb

Class *NSClassFromString(NSString *name) {
    return name ? qb::classNamed(name->view()) : nullptr;
}
