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

// Makes the registered classes that were not made yet, so that they can be found by their names. One that
// can't be made, because its name is taken, keeps no other from being made.
void buildRegisteredClasses() {
    const ClassRegistration *const newest = newestRegistration;
    const ClassRegistration *const built = std::exchange(newestBuilt, newest);
    std::exception_ptr failure;
    for (const ClassRegistration *one = newest; one != built; one = one->next)
        try {
            one->cls();
        } catch (...) {
            failure = std::current_exception();
        }
    if (failure)
        std::rethrow_exception(failure);
}

Class *classNamed(std::string_view name) {
    if (const ListedClass *listed = listedClass(name))
        return listed->cls();
    buildRegisteredClasses();
    const auto found = table().find(name);
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
    buildRegisteredClasses();
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
