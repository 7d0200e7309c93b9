#include "Site.h"

#include "Files.h"
#include "Messages.h"

#include <algorithm>

namespace publish {

namespace {

constexpr std::string_view kHeadEnd = "\n---\n";

// Returns the dictionary that `text`, which came from `file`, is as a property list; null with an error
// raised.
NSDictionary *readDictionary(NSString *text, NSString *file) {
    const id value = text->propertyList();
    auto *dictionary = qb::castOrNil<NSDictionary>(value);
    if (!dictionary)
        fail(__LINE__, kErrorMalformedFile, file);
    return dictionary;
}

// The lines that a body of HTML is moved down by its head, so that a template's errors name the line in the
// file.
NSString *bodyOfHtml(std::string_view text, std::string_view body) {
    const auto lines = std::count(text.begin(), text.end() - static_cast<std::ptrdiff_t>(body.size()), '\n');
    return NSString::stringWith(std::string(static_cast<std::size_t>(lines), '\n').append(body));
}

// Plain text: paragraphs between empty lines.
NSString *bodyOfText(std::string_view body) {
    NSMutableString *const html = NSMutableString::string();
    while (!body.empty()) {
        const std::size_t end = std::min(body.find("\n\n"), body.size());
        const std::string_view paragraph = body.substr(0, end);
        if (paragraph.find_first_not_of(" \t\r\n") != std::string_view::npos)
            html->appendFormat("<p>%@</p>\n"_ns, NSString::stringWith(paragraph)->stringWithEscapedHtml());
        body.remove_prefix(std::min(end + 2, body.size()));
    }
    return html;
}

bool readPage(NSString *file, NSString *path, Page &page) {
    NSString *const content = readText(file);
    if (!content)
        return false;
    const std::string_view text = content->view();
    const std::size_t headEnd = text.find(kHeadEnd);
    if (headEnd == std::string_view::npos)
        return fail(__LINE__, kErrorNoHead, file);
    NSDictionary *const head = readDictionary(NSString::stringWith(text.substr(0, headEnd)), file);
    if (!head)
        return false;
    const bool isText = path->pathExtension()->isEqualToString("txt"_ns);
    const std::string_view body = text.substr(headEnd + kHeadEnd.size());
    page.file = file;
    page.url = path->stringByDeletingPathExtension()->stringByAppendingPathExtension("html"_ns);
    page.head = head->mutableCopy();
    page.head->setObjectForKey(page.url, "url"_ns);
    page.body = isText ? bodyOfText(body) : bodyOfHtml(text, body);
    return true;
}

bool readPages(Site &site) {
    NSString *const directory = site.directoryFor("pages"_ns);
    NSArray *const files = filesBelow(directory);
    if (!files)
        return false;
    for (id element : *files) {
        const NSAutoreleasePool pool;
        auto *path = static_cast<NSString *>(element);
        Page page;
        if (!readPage(directory->stringByAppendingPathComponent(path), path, page))
            return false;
        site.pages.push_back(std::move(page));
    }
    return true;
}

// The files named under "texts" become values, so that a page can show them.
bool readTexts(Site &site) {
    site.texts = NSMutableDictionary::init();
    auto *names = qb::castOrNil<NSDictionary>(site.settings->objectForKey("texts"_ns));
    if (!names)
        return true;
    for (const auto &[key, name] : *names) {
        NSString *const file = name->stringValue();
        if (!isInside(file->view()))
            return fail(__LINE__, kErrorUnsafePath, site.directory.get(), file);
        NSString *const text = readText(site.directory->stringByAppendingPathComponent(file));
        if (!text)
            return false;
        site.texts->setObjectForKey(text, key);
    }
    return true;
}

} // namespace

NSString *Site::directoryFor(NSString *key) const {
    const id name = settings->objectForKey(key);
    return directory->stringByAppendingPathComponent(name ? name->stringValue() : key);
}

bool readSite(NSString *directory, Site &site) {
    site.directory = directory;
    NSString *const file = directory->stringByAppendingPathComponent("site.plist"_ns);
    NSString *const text = readText(file);
    if (!text)
        return false;
    site.settings = readDictionary(text, file);
    return site.settings && readTexts(site) && readPages(site);
}

} // namespace publish
