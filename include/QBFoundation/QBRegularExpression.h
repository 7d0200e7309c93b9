// Regular expressions.
#ifndef QBFOUNDATION_QBREGULAREXPRESSION_H
#define QBFOUNDATION_QBREGULAREXPRESSION_H

#include <QBFoundation/Foundation/NSArray.h>
#include <QBFoundation/Foundation/NSObject.h>
#include <QBFoundation/Foundation/NSRange.h>
#include <QBFoundation/Foundation/NSString.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <regex.h>
#include <span>
#include <string>

class QBRegularExpressionMatchObject;

/// A compiled pattern of the platform's regular expressions, always in the extended syntax.
///
/// Patterns and searched texts end at their first NUL, and what is found is counted in bytes. Flags are those
/// of `regcomp`, such as REG_ICASE and REG_NEWLINE.
///
/// A pattern that the platform could not work on without running out of stack or memory is refused like a
/// malformed one: one of more than 32768 bytes, with more than 1000 groups, or groups nested more than 200
/// deep, with more than 8 repeat operators in a row, with repeats that multiply to more than 40000 parts, or
/// to more than 8000 where what is repeated may have several lengths, as in "((a{9,40}){0,15}.){10}" (2000
/// with an anchor among them), with too many parts in a row that may match nothing, with more than two
/// anchors in a repeat that may match nothing (a word boundary counts as two), with more than 64 back
/// references after repeating, or with a back reference that is repeated without end.
///
/// So is one whose back references would take it more than a few seconds in a text of a few KiB, or make it
/// lose what it has found. Beside back references, only one thing may be open: where the match begins (unless
/// the pattern begins with "^", has no "|" outside of groups and REG_NEWLINE is not set), or where an endless
/// repeat ends. The end is not open where no reference stands in front, and a blank, "\s" or one of
/// !"#%&',-/:;<=>@_~ follows, with at most closing parentheses between, a repeated "\w" (but for "_"),
/// bracket expression of nothing but ASCII letters and digits, written out, as ranges or as classes
/// ("[:alpha:]"), or one without "[" inside that begins with "^" and names what follows ("-" at its beginning
/// or end). A group that is referred to must neither have an anchor nor be repeated, save by "?" when it
/// cannot be empty, nor stand behind a repeat with an open end, nor, when it can be empty, in a branch or in
/// what "?" may leave out, nor be referred to twice or beside an anchor that may be left out. No anchor may
/// be repeated, save by "?". Branches and repeats that may but need not go on are counted, and may be some 25
/// for one back reference, ten for two or in front of the group, four for four, one for ten, and fewer where
/// several of these meet or the pattern has many parts, of which there may be 200 after repeating (a set is
/// three). None may be in front of the group when any end is open. When the group has an endless repeat
/// inside, no reference may be left out, nor, unless the match begins at one place, any choice be in front of
/// the group. All choices together may leave 10 000 ways to read the pattern, and what has more than one must
/// not be repeated without end, as in "(a|b)*". So "([a-z])\1", "^(.+)-\1$" and "([a-z]+) \1" are fine,
/// "(.+)-\1" and "(.)*\1" are not.
///
/// Groups can't be found where an endless repeat may match nothing in several ways, as "(a?|b?)*", or may
/// match nothing and is repeated with an anchor, as "((^|,)a*)+" or "((a*)*^b){2}": the platform would look
/// for their places for ever. With such a pattern `matches:` works, and searches raise 100229 and find
/// nothing. Where a group has an anchor, as in "(^a)+|..", "(^a){3}" or "x($).", the platform may find
/// another match with groups than without, or none; and for "(a^.*){0,30}" it needs seconds in a few KiB.
///
/// What the platform learns from texts it keeps in the compiled pattern, without bounds. Searches compile the
/// pattern anew now and then, for which they need as much stack as its making, so that this doesn't add up,
/// unless the locale has changed since then, in which the pattern would mean something else (one with back
/// references is compiled for each search, and any other one after a search that ran out of memory, in the
/// present one); a single long text can still take much memory and time with a pattern such as
/// "^[ab]*a[ab]{30}c", which has very many states. A text of a few KiB already takes seconds with one in
/// which a set is repeated often behind a repeat that ends anywhere: in a character set of several bytes with
/// ".+[a-z]{143}-", in others with a word boundary, as "[a-z]*.{21,241}\<".
///
/// Searches given nil throw InvalidArgumentException. One that runs out of memory, or gets a text of 2 GiB or
/// more, which the platform's positions don't reach, raises 100156 and has found nothing. So does one for a
/// pattern with back references and endless repeats whose time would grow with the cube of the text's length:
/// where the text has more than 1024 bytes, and the match may begin anywhere, as for "([a-z]+) \1", or there
/// are many choices, or several references and a repeat with an open end or in a group that they name; and
/// where it has more than 4096, and a group that is referred to has an endless repeat inside, as in
/// "^(.+)-\1$", whose memory would grow with the square. Without an endless repeat, as in
/// "([a-z]{1,20}) \1", texts may have any length. The platform does not always say that memory is missing: it
/// may end the process instead, or search on for ever.
class QB_EXPORT QBRegularExpression : public NSObject {
public:
    QBRegularExpression() noexcept = default;
    ~QBRegularExpression() override;

    static Class *cls();
    Class *classObject() const override { return cls(); }

    /// Returns the expression, the same object for the same pattern and flags as long as the process lives.
    ///
    /// Nil, with error 100229 as `initWithPattern:flags:` raises it, the first time that the pattern does not
    /// compile; the null object from then on. A pattern and its flags are told apart from others by the text
    /// of both, so that "a1" with flags 0 and "a" with flags 10 are the same.
    /// Throws InvalidArgumentException when `pattern` is nil.
    static id regularExpressionWithPattern(NSString *pattern, std::int32_t flags);
    /// As above without flags.
    static id regularExpressionWithPattern(NSString *pattern) {
        return regularExpressionWithPattern(pattern, 0);
    }
    /// As above, but of the class asked, each of which has expressions of its own.
    static id regularExpressionWithPatternOfClass(Class *asked, NSString *pattern, std::int32_t flags);
    /// Compiles the pattern. Nil when that fails, and raises 100229 (pattern, what is wrong).
    /// Throws InvalidArgumentException when `pattern` is nil.
    static Ref<QBRegularExpression> initWithPattern(NSString *pattern, std::int32_t flags) {
        return qb::init<QBRegularExpression>(&QBRegularExpression::setUpWithPattern, pattern, flags);
    }

    /// Returns the first match, autoreleased; nil when there is none. Raises 100229 (pattern, what is wrong)
    /// when the pattern's groups can't be found.
    QBRegularExpressionMatchObject *search(NSString *string) const { return search(string, 0); }
    /// As above, in the rest of the string from a character on, which is the beginning for "^".
    /// Throws NSRangeException when there is no such place in the string.
    virtual QBRegularExpressionMatchObject *search(NSString *string, std::int32_t fromIndex) const;
    /// Returns the first match when it is the whole string, whose length is that in characters; else nil.
    virtual QBRegularExpressionMatchObject *match(NSString *string) const;
    /// Whether there is a match anywhere in the string.
    virtual BOOL matches(NSString *string) const;

protected:
    virtual BOOL setUpWithPattern(NSString *pattern, std::int32_t flags);

private:
    struct Places;
    // Where a pattern is compiled.
    struct Locale {
        std::string names;
        std::shared_ptr<void> data; // the thread's own one, which what is compiled points into
    };

    /// Whether there is a match; the places of it and its groups go to `places`.
    bool isFoundIn(NSString *string, std::span<regmatch_t> places) const;
    bool hasGroupsIn(NSString *string, Places &places) const;
    int execute(NSString *string, std::span<regmatch_t> places) const;
    int compile(regex_t &regex, Locale &locale) const;
    bool compileAnew() const;
    bool isOfThisLocale() const;

    mutable regex_t compiledRegex_{};
    bool isCompiled_ = false;
    mutable bool isSpoilt_ = false; // by the last search
    Ref<NSString> pattern_;
    std::int32_t flags_ = 0;
    bool hasReferences_ = false;
    mutable Locale locale_;
    mutable std::int64_t compilingTime_ = 0; // in nanoseconds
    mutable std::int64_t searchingTime_ = 0; // since then, as far as it is measured
    mutable std::size_t unmeasured_ = 0;     // bytes searched since
    const char *groupFault_ = nullptr;       // why groups can't be found
    std::size_t longestText_ = 0;            // bytes that the matcher is given at most
};

/// What a search has found: the places of the whole match, group 0, and of the pattern's groups.
///
/// Operations that take the number of a group throw NSRangeException when the pattern has no such group.
class QB_EXPORT QBRegularExpressionMatchObject : public NSObject {
public:
    QBRegularExpressionMatchObject() noexcept;
    ~QBRegularExpressionMatchObject() override;

    static Class *cls();
    Class *classObject() const override { return cls(); }

    /// Returns what was found at `matches`, `count` pairs of start and end, in the part of `toString` from
    /// `fromIndex` on.
    static Ref<QBRegularExpressionMatchObject> initWithMatches(const regmatch_t *matches, std::uint32_t count,
                                                               NSString *toString, std::int32_t fromIndex) {
        return qb::init<QBRegularExpressionMatchObject>(&QBRegularExpressionMatchObject::setUpWithMatches,
                                                        matches, count, toString, fromIndex);
    }
    static QBRegularExpressionMatchObject *matchObjectWithMatches(const regmatch_t *matches,
                                                                  std::uint32_t count, NSString *toString,
                                                                  std::int32_t fromIndex) {
        return initWithMatches(matches, count, toString, fromIndex).autorelease();
    }

    /// Return where a group begins and ends, in bytes behind the place where the search began, plus that
    /// place's index; the index less one for a group that was not part of the match.
    virtual std::int32_t startOfGroup(std::uint32_t group) const;
    virtual std::int32_t endOfGroup(std::uint32_t group) const;
    virtual NSRange rangeOfGroup(std::uint32_t group) const;
    /// Returns the characters of the string in the group's range, autoreleased; "" when it is outside.
    virtual NSString *group(std::uint32_t group) const;
    /// Returns the text of each group, the whole match first, autoreleased.
    virtual NSArray *groups() const;

    /// A dictionary for each group with the numbers "startOffset" and "endOffset".
    virtual NSMutableArray *subGroups() const;
    virtual void setSubGroups(NSMutableArray *subGroups);
    /// The string that was searched.
    virtual NSString *string() const;
    virtual void setString(NSString *string);

protected:
    virtual BOOL setUpWithMatches(const regmatch_t *matches, std::uint32_t count, NSString *toString,
                                  std::int32_t fromIndex);

private:
    Ref<NSMutableArray> subGroups_;
    Ref<NSString> string_;
};

#endif
