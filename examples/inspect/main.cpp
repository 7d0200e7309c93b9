// Lists what the library's classes answer, one operation a line: class, + or -, selector, signature,
// separated by tabs.
//
#include <QBFoundation/QBFoundation.h>

#include <cstdio>
#include <cstring>

namespace {

constexpr const char *kUsage =
    "Usage: inspect [CLASS ...]\n"
    "Lists what these classes answer, with what they inherit, or, without a CLASS, the operations that\n"
    "each class defines itself. One a line: class, + or -, selector and signature, separated by tabs.\n"
    "+ marks an operation of the class itself.\n";

void list(Class *cls, const qb::Method &method) {
    const std::string name(cls->nameView());
    std::printf("%s\t%c\t%s\t%s\n", name.c_str(), method.isClassMethod() ? '+' : '-',
                method.selector()->text(), method.signature().c_str());
}

} // namespace

int main(int argumentCount, char **arguments) {
    const NSAutoreleasePool pool;
    if (argumentCount == 1)
        for (Class *cls : qb::allClasses())
            for (const auto &method : cls->ownMethods())
                list(cls, *method);
    for (int i = 1; i < argumentCount; ++i) {
        if (arguments[i][0] == '-') {
            const bool wantsHelp = std::strcmp(arguments[i], "--help") == 0;
            std::fputs(kUsage, wantsHelp ? stdout : stderr);
            return !wantsHelp ? 2 : std::fflush(stdout) == 0 ? 0 : 1;
        }
        Class *const cls = NSClassFromString(NSString::stringWith(arguments[i]));
        if (!cls) {
            std::fprintf(stderr, "inspect: there is no class '%s'.\n", arguments[i]);
            return 1;
        }
        qb::forEachMethod(cls, [cls](const qb::Method &method) { list(cls, method); });
    }
    return std::fflush(stdout) == 0 ? 0 : 1;
}
