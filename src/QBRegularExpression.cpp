#include <QBFoundation/QBRegularExpression.h>

#include <QBFoundation/ErrorNumbers.h>
#include <QBFoundation/Foundation/NSDictionary.h>
#include <QBFoundation/Foundation/NSException.h>
#include <QBFoundation/QBErrorHandler.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "Foundation/NSString.Tables.h"
#include "System/Clock.h"
#include "System/Regex.h"
#include "Text/PatternCheck.h"

#include <algorithm>
#include <array>
#include <langinfo.h>
#include <map>
#include <new>
#include <span>
#include <string>
#include <utility>

namespace {

constexpr const char *kFile = "src/QBRegularExpression";
constexpr int kLineOfCompiling = 191;

[[noreturn]] void throwNoString(const char *selector) {
    throw InvalidArgumentException(std::string("QBRegularExpression ") + selector +
                                   " must have a string that is not nil.");
}

NSString *checkedString(NSString *string, const char *selector) {
    if (!string)
        throwNoString(selector);
    return string;
}

/// The name of a category's locale, the thread's own one if it has one.
const char *localeOf(int category) {
    return ::nl_langinfo(_NL_LOCALE_NAME(category));
}

/// The class's expressions by pattern and flags, the null object for those that don't compile. Never
/// destroyed.
NSMutableDictionary *cachedExpressions(Class *cls) {
    static auto &caches = *new std::map<Class *, Ref<NSMutableDictionary>>;
    Ref<NSMutableDictionary> &cache = caches[cls];
    if (!cache)
        cache = NSMutableDictionary::init();
    return cache;
}

/// The latest expressions by pattern object: programs ask for constant patterns over and over.
class LatestExpressions {
public:
    QBRegularExpression *find(NSString *pattern, std::int32_t flags) const {
        const Entry &entry = entryFor(pattern);
        return entry.pattern.get() == pattern && entry.flags == flags ? entry.expression : nullptr;
    }

    void store(NSString *pattern, std::int32_t flags, QBRegularExpression *expression) {
        if (expression && pattern->copyWithZone(nullptr).get() == pattern) // it will never change
            entryFor(pattern) = {pattern, flags, expression};
    }

private:
    struct Entry {
        Ref<NSString> pattern; // keeps the address from being another string's
        std::int32_t flags = 0;
        QBRegularExpression *expression = nullptr; // kept by the cache
    };

    const Entry &entryFor(NSString *pattern) const {
        return entries_[reinterpret_cast<std::uintptr_t>(pattern) / 64 % entries_.size()];
    }
    Entry &entryFor(NSString *pattern) {
        return const_cast<Entry &>(static_cast<const LatestExpressions *>(this)->entryFor(pattern));
    }

    std::array<Entry, 16> entries_;
};

LatestExpressions &latestExpressions() {
    static auto &latest = *new LatestExpressions;
    return latest;
}

} // namespace

Class *QBRegularExpression::cls() {
    static const qb::Method methods[] = {
        qb::classMethod<"regularExpressionWithPattern:flags:">(
            &QBRegularExpression::regularExpressionWithPatternOfClass),
        qb::classMethod<"regularExpressionWithPattern:">(+[](Class *asked, NSString *pattern) {
            return QBRegularExpression::regularExpressionWithPatternOfClass(asked, pattern, 0);
        }),
        qb::initialiser<"initWithPattern:flags:">(&QBRegularExpression::setUpWithPattern),
        qb::method<"search:", QBRegularExpressionMatchObject *(NSString *)>(&QBRegularExpression::search),
        qb::method<"search:fromIndex:", QBRegularExpressionMatchObject *(NSString *, std::int32_t)>(
            &QBRegularExpression::search),
        qb::method<"match:">(&QBRegularExpression::match),
        qb::method<"matches:">(&QBRegularExpression::matches),
    };
    static Class *const self =
        new Class("QBRegularExpression", NSObject::cls(), methods, qb::construct<QBRegularExpression>);
    return self;
}

QBRegularExpression::~QBRegularExpression() {
    if (isCompiled_)
        regfree(&compiledRegex_);
}

id QBRegularExpression::regularExpressionWithPattern(NSString *pattern, std::int32_t flags) {
    checkedString(pattern, "regularExpressionWithPattern:flags:");
    if (QBRegularExpression *const latest = latestExpressions().find(pattern, flags))
        return latest;
    const id expression = regularExpressionWithPatternOfClass(cls(), pattern, flags);
    latestExpressions().store(pattern, flags, qb::castOrNil<QBRegularExpression>(expression));
    return expression;
}

id QBRegularExpression::regularExpressionWithPatternOfClass(Class *asked, NSString *pattern,
                                                            std::int32_t flags) {
    checkedString(pattern, "regularExpressionWithPattern:flags:");
    NSMutableDictionary *const cache = cachedExpressions(asked);
    NSString *const key = NSString::stringWithRestrictedFormat("%s%d", pattern, flags);
    if (const id expression = cache->objectForKey(key))
        return expression;
    Ref<NSObject> expression = asked->construct();
    if (!static_cast<QBRegularExpression *>(expression.get())->setUpWithPattern(pattern, flags))
        expression = nullptr;
    cache->setObjectAndQBNilIfIsNil(expression, key);
    return expression;
}

BOOL QBRegularExpression::setUpWithPattern(NSString *pattern, std::int32_t flags) {
    const char *const text = checkedString(pattern, "initWithPattern:flags:")->cString();
    const qb::text::PatternLimits limits = qb::text::checkPattern(text, (flags & REG_NEWLINE) != 0);
    if (limits.fault) {
        qb::raiseError(kFile, kLineOfCompiling, qb::kErrorMalformedPattern, pattern, limits.fault);
        return NO;
    }
    pattern_ = NSString::initWith(pattern->view()); // a client's class may have no copies
    groupFault_ = limits.groupFault;
    longestText_ = limits.longestText;
    flags_ = flags;
    hasReferences_ = limits.hasReferences;
    const int code = compile(compiledRegex_, locale_);
    isCompiled_ = code == 0;
    if (!isCompiled_)
        qb::raiseError(kFile, kLineOfCompiling, qb::kErrorMalformedPattern, pattern,
                       qb::sys::regerror(code, compiledRegex_).c_str());
    return isCompiled_;
}

// Notes in which locale.
int QBRegularExpression::compile(regex_t &regex, Locale &locale) const {
    try {
        locale = {std::string(localeOf(LC_CTYPE)) + ' ' + localeOf(LC_COLLATE), qb::sys::keptThreadLocale()};
    } catch (const std::bad_alloc &) {
        return REG_ESPACE;
    }
    const std::int64_t start = qb::sys::monotonicNanoseconds();
    const int code = qb::sys::regcomp(regex, pattern_->cString(), flags_ | REG_EXTENDED);
    if (code == 0)
        compilingTime_ = qb::sys::monotonicNanoseconds() - start;
    return code;
}

// Whether the pattern would still mean the same.
bool QBRegularExpression::isOfThisLocale() const {
    const std::string_view types = localeOf(LC_CTYPE);
    const std::string_view order = localeOf(LC_COLLATE);
    const std::string_view own = locale_.names;
    return own.size() == types.size() + 1 + order.size() && own.starts_with(types) && own.ends_with(order);
}

// Returns false, with the old one, also when the locale is another one; but what is spoilt is of no use in
// its own.
bool QBRegularExpression::compileAnew() const {
    searchingTime_ = 0;
    if (!isSpoilt_ && !isOfThisLocale())
        return false;
    regex_t fresh{};
    Locale locale;
    if (compile(fresh, locale) != 0)
        return false;
    regfree(&compiledRegex_);
    compiledRegex_ = fresh;
    locale_ = std::move(locale);
    isSpoilt_ = false;
    return true;
}

// The matcher gets slower with all that it keeps in the pattern. When searching has taken far longer than
// compiling does, that is forgotten. The clock is read for one search in some texts only.
int QBRegularExpression::execute(NSString *string, std::span<regmatch_t> places) const {
    constexpr std::size_t kMeasuredBytes = 4096;
    constexpr std::int64_t kManyTimes = 256;
    if (isSpoilt_ && !compileAnew()) [[unlikely]]
        return REG_ESPACE;
    const std::size_t length = string->cStringLength();
    unmeasured_ += length;
    if (unmeasured_ < kMeasuredBytes) [[likely]]
        return qb::sys::regexec(compiledRegex_, string->cString(), places.size(), places.data());
    const std::int64_t start = qb::sys::monotonicNanoseconds();
    const int result = qb::sys::regexec(compiledRegex_, string->cString(), places.size(), places.data());
    const std::int64_t time = qb::sys::monotonicNanoseconds() - start;
    searchingTime_ += time * static_cast<std::int64_t>(unmeasured_ / length);
    unmeasured_ = 0;
    if (searchingTime_ > kManyTimes * compilingTime_)
        compileAnew();
    return result;
}

bool QBRegularExpression::isFoundIn(NSString *string, std::span<regmatch_t> places) const {
    if (!isCompiled_)
        return false;
    const bool isTooLong = string->cStringLength() > longestText_;
    const int result = isTooLong ? REG_ESPACE : execute(string, places);
    const bool isError = result != 0 && result != REG_NOMATCH;
    // Later searches would trust what the matcher has left half done, and what it keeps beside back
    // references, which is true for this text only.
    if (!isTooLong)
        isSpoilt_ = isError || hasReferences_;
    if (isError)
        qb::raiseError(kFile, __LINE__, qb::kErrorOutOfMemory);
    return result == 0;
}

/// The places of a match and its groups.
struct QBRegularExpression::Places {
    std::array<regmatch_t, qb::text::kMostPatternGroups + 1> of; // not set before they are asked for
    std::uint32_t count = 0;
};

bool QBRegularExpression::hasGroupsIn(NSString *string, Places &places) const {
    places.count = static_cast<std::uint32_t>(std::min(compiledRegex_.re_nsub + 1, places.of.size()));
    const std::span<regmatch_t> groups = std::span(places.of).first(places.count);
    std::ranges::fill(groups, regmatch_t{-1, -1}); // REG_NOSUB leaves them as they are
    return isFoundIn(string, groups);
}

QBRegularExpressionMatchObject *QBRegularExpression::search(NSString *string, std::int32_t fromIndex) const {
    checkedString(string, "search:fromIndex:");
    NSString *const rest = string->substringFromIndex(static_cast<std::uint32_t>(fromIndex));
    if (groupFault_) {
        qb::raiseError(kFile, __LINE__, qb::kErrorMalformedPattern, pattern_.get(), groupFault_);
        return nullptr;
    }
    Places places;
    if (!hasGroupsIn(rest, places))
        return nullptr;
    return QBRegularExpressionMatchObject::matchObjectWithMatches(places.of.data(), places.count, string,
                                                                  fromIndex);
}

QBRegularExpressionMatchObject *QBRegularExpression::match(NSString *string) const {
    QBRegularExpressionMatchObject *const found = search(string);
    return found && found->startOfGroup(0) == 0 && found->rangeOfGroup(0).length == string->length()
               ? found
               : nullptr;
}

BOOL QBRegularExpression::matches(NSString *string) const {
    checkedString(string, "matches:");
    if (!hasReferences_)
        return isFoundIn(string, {});
    Places places; // without them it may find what a search does not
    return hasGroupsIn(string, places);
}

std::span<const qb::Method> qb::tables::stringRegularExpression() {
    static const qb::Method methods[] = {
        qb::method<"matches:">(&NSString::matches),
    };
    return methods;
}

BOOL NSString::matches(NSString *pattern) const {
    const QBRegularExpression *expression = latestExpressions().find(pattern, 0);
    if (!expression)
        expression =
            qb::castOrNil<QBRegularExpression>(QBRegularExpression::regularExpressionWithPattern(pattern));
    return expression && expression->matches(static_cast<NSString *>(self()));
}
