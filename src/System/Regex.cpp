#include "Regex.h"

#include "Faults.h"

#include <cerrno>
#include <clocale>
#include <new>

namespace qb::sys {

int regcomp(regex_t &expression, const char *pattern, int flags) noexcept {
    return fails(Call::regcomp) ? REG_ESPACE : ::regcomp(&expression, pattern, flags);
}

int regexec(const regex_t &expression, const char *text, std::size_t count, regmatch_t *places) noexcept {
    if (fails(Call::regexec))
        return REG_ESPACE;
    errno = 0;
    const int result = ::regexec(&expression, text, count, places, 0);
    // The C library takes missing memory for no match.
    return result == REG_NOMATCH && errno == ENOMEM ? REG_ESPACE : result;
}

std::shared_ptr<void> keptThreadLocale() {
    const locale_t own = ::uselocale(nullptr);
    if (own == LC_GLOBAL_LOCALE) // whose data stay for ever
        return nullptr;
    const locale_t kept = ::duplocale(own);
    if (!kept)
        throw std::bad_alloc();
    return {kept, [](void *locale) { ::freelocale(static_cast<locale_t>(locale)); }};
}

std::string regerror(int code, const regex_t &expression) {
    std::string text(::regerror(code, &expression, nullptr, 0), '\0');
    ::regerror(code, &expression, text.data(), text.size());
    text.pop_back(); // the NUL
    return text;
}

} // namespace qb::sys
