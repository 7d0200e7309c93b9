#include "Site.h"

#include "Dates.h"
#include "Files.h"
#include "Links.h"
#include "Messages.h"

#include <algorithm>

namespace publish {

namespace {

// The line of dashes that ends a page's head.
struct HeadEnd {
    std::size_t begin; // of the line's dashes, at the end of the line before; npos where there is none
    std::size_t end;
};

HeadEnd headEndIn(std::string_view text) {
    constexpr std::string_view kDashes = "\n---";
    std::size_t begin = text.find(kDashes);
    for (; begin != std::string_view::npos; begin = text.find(kDashes, begin + 1)) {
        const std::size_t lineEnd = begin + kDashes.size();
        const std::size_t end = text.substr(lineEnd).starts_with('\r') ? lineEnd + 1 : lineEnd;
        if (end == text.size() || text[end] == '\n')
            return {begin, std::min(end + 1, text.size())};
    }
    return {begin, text.size()};
}

// Returns the line of a property list on which a key seems to stand, or the first one.
int lineOfKey(std::string_view list, std::string_view key) {
    std::size_t begin = list.find(key);
    for (; begin != std::string_view::npos; begin = list.find(key, begin + 1)) {
        const std::size_t next = list.find_first_not_of("\" \t\r\n", begin + key.size());
        if (next != std::string_view::npos && list[next] == '=')
            return 1 + static_cast<int>(std::ranges::count(list.substr(0, begin), '\n'));
    }
    return 1;
}

// Appends the text escaped, but for what stands in braces for the template.
void appendEscaped(std::string_view text, std::string &html) {
    while (!text.empty()) {
        const std::size_t open = std::min(text.find("{{"), text.size());
        html += NSString::stringWith(text.substr(0, open))->stringWithEscapedHtml()->view();
        text.remove_prefix(open);
        const std::size_t close = text.find("}}");
        const std::size_t end = close == std::string_view::npos ? text.size() : close + 2;
        html += text.substr(0, end);
        text.remove_prefix(end);
    }
}

// Returns the end of the line in front of the first empty one, or of the text.
std::size_t paragraphEnd(std::string_view text) {
    std::size_t end = text.find('\n');
    for (; end != std::string_view::npos; end = text.find('\n', end + 1)) {
        const std::size_t next = text.find_first_not_of(" \t\r", end + 1);
        if (next != std::string_view::npos && text[next] == '\n')
            return end;
    }
    return text.size();
}

// Appends plain text: paragraphs between empty lines. What stands on a line stays there, for errors name
// lines.
void appendPlainText(std::string_view body, std::string &html) {
    while (!body.empty()) {
        const std::size_t end = paragraphEnd(body);
        const std::string_view paragraph = body.substr(0, end);
        const bool isEmpty = paragraph.find_first_not_of(" \t\r\n") == std::string_view::npos;
        html += isEmpty ? "" : "<p>";
        appendEscaped(paragraph, html);
        html += isEmpty ? "" : "</p>";
        const std::size_t next = std::min(body.find_first_not_of(" \t\r\n", end), body.size());
        html += body.substr(end, next - end);
        body.remove_prefix(next);
    }
}

// The body, moved down by the head's lines so that a template's errors name the line in the file.
NSString *htmlOf(std::string_view head, std::string_view body, bool isPlainText) {
    std::string html(static_cast<std::size_t>(std::count(head.begin(), head.end(), '\n')), '\n');
    if (isPlainText)
        appendPlainText(body, html);
    else
        html += body;
    return NSString::stringWith(html);
}

// A date object's short text has only the years that 32 bits have.
NSString *shownDate(id value) {
    return value->isKindOfClass(NSDate::cls()) ? value->description() : value->stringValue();
}

// A page's date, if it has one, gets the forms that its readers want.
bool addDates(Page &page) {
    const id value = page.head->objectForKey("date"_ns);
    if (!value) {
        page.head->removeObjectsForKeys(NSArray::arrayWithObjects("isoDate"_ns, "httpDate"_ns));
        return true;
    }
    NSCalendarDate *const date = dateOf(value);
    if (!date)
        return fail(__LINE__, kErrorNoDate, page.file.get(), shownDate(value));
    page.head->setObjectForKey(isoText(date), "isoDate"_ns);
    page.head->setObjectForKey(httpText(date), "httpDate"_ns);
    return true;
}

NSString *readEnciphered(NSString *file, const Cipher &cipher) {
    NSData *const bytes = readBytes(file);
    NSData *const content = bytes ? cipher.deciphered(bytes, file) : nullptr;
    NSString *const text = content ? textIn(content) : nullptr;
    return text && isUtf8(text, file) ? text : nullptr;
}

bool readPage(NSString *file, NSString *path, const Cipher &cipher, Page &page) {
    const bool isEnciphered = path->pathExtension()->isEqualToString(encipheredExtension());
    if (isEnciphered)
        path = path->stringByDeletingPathExtension();
    NSString *const content = isEnciphered ? readEnciphered(file, cipher) : readText(file);
    if (!content)
        return false;
    const std::string_view text = content->view();
    const HeadEnd headEnd = headEndIn(text);
    if (headEnd.begin == std::string_view::npos)
        return fail(__LINE__, kErrorNoHead, file);
    NSDictionary *const head = dictionaryIn(NSString::stringWith(text.substr(0, headEnd.begin)), file);
    if (!head)
        return false;
    const bool isText = path->pathExtension()->lowercaseString()->isEqualToString("txt"_ns);
    page.file = file;
    page.url = path->stringByDeletingPathExtension()->stringByAppendingPathExtension("html"_ns);
    page.head = head->mutableCopy();
    page.templateLine = lineOfKey(text.substr(0, headEnd.begin), "template");
    page.body = htmlOf(text.substr(0, headEnd.end), text.substr(headEnd.end), isText);
    return settle(page);
}

bool readPages(Site &site) {
    NSString *const directory = site.directoryFor("pages"_ns);
    NSArray *const files = filesBelow(directory, HiddenFiles::leftOut);
    if (!files)
        return false;
    for (id element : *files) {
        const NSAutoreleasePool pool;
        auto *path = static_cast<NSString *>(element);
        Page page;
        if (!readPage(directory->stringByAppendingPathComponent(path), path, site.cipher, page))
            return false;
        site.pages.push_back(std::move(page));
    }
    return true;
}

// Whether what the settings give for a file or directory is a path inside of the base directory, or an
// absolute one, that does not lead back on its way.
bool isSafe(const Site &site, id value, bool isDirectory) {
    auto *path = qb::castOrNil<NSString>(value);
    std::string_view text = path ? path->view().substr(path->isAbsolutePath()) : "";
    if (isDirectory && text.ends_with('/'))
        text.remove_suffix(1);
    if (isInside(text))
        return true;
    return fail(__LINE__, kErrorUnsafePath, site.file.get(), value->stringValue());
}

// Makes the directory that names are relative to, if they have one of their own, relative to `above`.
bool settleBase(const Site &site, NSMutableDictionary *names, NSString *above) {
    const id value = names->objectForKey("basedir"_ns);
    if (!value)
        return true;
    if (!isSafe(site, value, /*isDirectory=*/true))
        return false;
    auto *base = static_cast<NSString *>(value);
    if (!base->isAbsolutePath())
        names->setObjectForKey(above->stringByAppendingPathComponent(base), "basedir"_ns);
    return true;
}

bool checkDirectories(const Site &site, NSString *target) {
    for (NSString *key : {"pages"_ns, "templates"_ns, "assets"_ns}) {
        const id value = site.settings->objectForKey(key);
        if ((value && !isSafe(site, value, /*isDirectory=*/true)) || !isApart(site.directoryFor(key), target))
            return false;
    }
    return true;
}

// The files named under "texts" become values, so that a page can show them.
bool readTexts(Site &site) {
    site.texts = NSMutableDictionary::init();
    const id texts = site.settings->objectForKey("texts"_ns);
    auto *listed = texts ? qb::castOrNil<NSDictionary>(texts) : NSDictionary::dictionary();
    if (!listed)
        return fail(__LINE__, kErrorNotADictionary, site.file.get(), "'texts'");
    const Ref<NSMutableDictionary> names = listed->mutableCopy();
    if (!settleBase(site, names, site.base()))
        return false;
    for (const auto &[key, name] : *listed) {
        if (key->isEqual("basedir"_ns))
            continue;
        if (!isSafe(site, name, /*isDirectory=*/false))
            return false;
        NSString *const file = names->pathForKey(key, nullptr, site.base());
        site.textFiles->addObject(file);
        NSString *const text = readText(file);
        if (!text)
            return false;
        site.texts->setObjectForKey(text, key);
    }
    return true;
}

NSMutableDictionary *mutableInDepth(NSDictionary *dictionary);

// What settings from outside can be put into, wherever they go.
id mutableInDepth(id value) {
    if (auto *const list = qb::castOrNil<NSArray>(value)) {
        NSMutableArray *const made = NSMutableArray::array();
        for (id element : *list)
            made->addObject(mutableInDepth(element));
        return made;
    }
    auto *const dictionary = qb::castOrNil<NSDictionary>(value);
    return dictionary ? mutableInDepth(dictionary) : value;
}

NSMutableDictionary *mutableInDepth(NSDictionary *dictionary) {
    NSMutableDictionary *const made = NSMutableDictionary::dictionary();
    for (const auto &[key, value] : *dictionary)
        made->setObjectForKey(mutableInDepth(value), key);
    return made;
}

bool readSettings(Site &site) {
    NSDictionary *const settings = readDictionary(site.file);
    if (settings)
        site.settings = mutableInDepth(settings);
    return settings;
}

// Whether a dotted key has no empty component, which would lead to the first place of a list.
bool isComplete(NSString *key) {
    return NSString::stringWithFormat(".%@."_ns, key)->view().find("..") == std::string_view::npos;
}

bool override(NSArray *overrides, Site &site) {
    for (std::uint32_t i = 0; i + 1 < overrides->count(); i += 2) {
        auto *key = static_cast<NSString *>(overrides->objectAtIndex(i));
        const id value = overrides->objectAtIndex(i + 1);
        if (isComplete(key))
            site.settings->setDeepObject(value, key);
        // Where an array has no such place, nothing is stored and nothing said.
        if (hasFailed() || site.settings->deepObjectForKey(key) != value)
            return fail(__LINE__, kErrorNotASetting, site.file.get(), key);
    }
    return true;
}

} // namespace

NSString *Page::address() const {
    return NSString::stringWith(escapedPath(url->view()));
}

bool settle(Page &page) {
    if (page.url->pathExtension()->isEqualToString(encipheredExtension()))
        page.url = page.url->stringByDeletingPathExtension();
    const id isToBeEnciphered = page.head->objectForKey("enciphered"_ns);
    page.isEnciphered = isToBeEnciphered && isToBeEnciphered->stringValue()->boolValue();
    if (page.isEnciphered)
        page.url = page.url->stringByAppendingPathExtension(encipheredExtension());
    page.head->setObjectForKey(page.address(), "url"_ns);
    return addDates(page);
}

NSString *Site::base() const {
    const id base = settings->objectForKey("basedir"_ns);
    return base ? base->stringValue() : directory.get();
}

NSString *Site::directoryFor(NSString *key) const {
    return settings->pathForKey(key, key, directory);
}

bool Site::hasAssets() const {
    return settings->objectForKey("assets"_ns) || kindOf(directoryFor("assets"_ns)) != Kind::nothing;
}

bool isApart(NSString *directory, NSString *target) {
    return areApart(directory, target) || fail(__LINE__, kErrorNotApart, directory, target);
}

bool readSite(NSString *directory, NSString *target, NSArray *overrides, Site &site) {
    site.directory = directory;
    site.file = directory->stringByAppendingPathComponent("site.plist"_ns);
    return readSettings(site) && override(overrides, site) && settleBase(site, site.settings, directory) &&
           checkDirectories(site, target) && readTexts(site) && readPages(site);
}

} // namespace publish
