// Locales that the machine may not have.
#ifndef QBFOUNDATION_TESTS_SUPPORT_LOCALES_H
#define QBFOUNDATION_TESTS_SUPPORT_LOCALES_H

#include <locale.h>

/// Returns whether there is a locale of that name, "de_DE.UTF-8". The build makes those that tests need, and
/// ctest says where they are.
inline bool haveLocale(const char *name) {
    const locale_t locale = ::newlocale(LC_ALL_MASK, name, nullptr);
    if (locale)
        ::freelocale(locale);
    return locale != nullptr;
}

/// Skips a test that needs the locale.
#define NEED_LOCALE(name)                                                                                    \
    if (!haveLocale(name))                                                                                   \
    GTEST_SKIP() << "There is no locale " << (name) << " (Debian: locales)"

#endif
