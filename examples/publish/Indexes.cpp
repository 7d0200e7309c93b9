#include "Indexes.h"

#include "Collecting.h"
#include "Files.h"
#include "Links.h"
#include "Messages.h"

#include <string>
#include <string_view>

namespace publish {

namespace {

constexpr std::uint32_t kUsualIndex = 16 * 1024;
constexpr unsigned kFeedPages = 20;

// The two that are valid UTF-8 and no characters of XML.
NSString *withoutNoncharacters(NSString *text) {
    return text->stringByReplacingSubstring("\xEF\xBF\xBE"_ns, ""_ns)
        ->stringByReplacingSubstring("\xEF\xBF\xBF"_ns, ""_ns);
}

// An XML text that is being written; control characters are left out of it, for XML has none.
class XmlText {
public:
    XmlText() { add(R"(<?xml version="1.0" encoding="UTF-8"?>)"); }

    void add(std::string_view markup) {
        stream_->writeBuffer(markup.data(), static_cast<std::uint32_t>(markup.size()));
    }
    /// An element with a text in it; without a value there is none.
    void addElement(std::string_view name, id value) {
        if (!value)
            return;
        const std::string tag(name);
        add("<" + tag + ">");
        stream_->writeObject(withoutNoncharacters(value->stringValue())->stringWithEscapedHtml());
        add("</" + tag + ">");
    }
    NSData *data() const { return data_->targetData(); }

private:
    QBDataOutputStream *data_ = collecting<QBDataOutputStream>(kUsualIndex);
    QBValidCharFilter *stream_ = QBValidCharFilter::streamWithTarget(data_);
};

// The site's address with a slash at its end.
NSString *addressOf(const Site &site, id value) {
    auto *address = qb::castOrNil<NSString>(value);
    if (!address || !hasScheme(address->view())) {
        fail(__LINE__, kErrorNoAddress, site.file.get(), value->stringValue());
        return nullptr;
    }
    return address->hasSuffix("/"_ns) ? address : address->stringByAppendingString("/"_ns);
}

NSString *pageAddress(NSString *site, id page) {
    auto *url = static_cast<NSString *>(page->objectForKey("url"_ns));
    return site->stringByAppendingString(url);
}

NSArray *headsOf(const Site &site, bool areDated) {
    NSMutableArray *const heads = NSMutableArray::array();
    for (const Page &page : site.pages)
        if (!areDated || page.head->objectForKey("isoDate"_ns))
            heads->addObject(page.head);
    return heads;
}

NSData *siteMap(const Site &site, NSString *address) {
    XmlText text;
    text.add("\n<urlset xmlns=\"http://www.sitemaps.org/schemas/sitemap/0.9\">\n");
    for (id page : *headsOf(site, /*areDated=*/false)) {
        const NSAutoreleasePool pool;
        text.add("<url>");
        text.addElement("loc", pageAddress(address, page));
        text.addElement("lastmod", page->objectForKey("isoDate"_ns));
        text.add("</url>\n");
    }
    text.add("</urlset>\n");
    return text.data();
}

void addItem(XmlText &text, NSString *address, id page) {
    const NSAutoreleasePool pool;
    NSString *const link = pageAddress(address, page);
    const id title = page->objectForKey("title"_ns);
    text.add("<item>");
    text.addElement("title", title ? title : link);
    text.addElement("link", link);
    text.addElement("guid", link);
    text.addElement("pubDate", page->objectForKey("httpDate"_ns));
    text.addElement("description", page->objectForKey("description"_ns));
    text.add("</item>\n");
}

NSData *feed(const Site &site, NSString *address) {
    const NSDictionary *const settings = site.settings;
    const id title = settings->deepObjectForKey("feed.title"_ns, settings->objectForKey("title"_ns, address));
    NSArray *const pages =
        headsOf(site, /*areDated=*/true)->caseInsensitiveSortedArrayByKey("isoDate.REVERSE"_ns);
    unsigned left = kFeedPages;
    XmlText text;
    text.add("\n<rss version=\"2.0\"><channel>\n");
    text.addElement("title", title);
    text.addElement("link", address);
    text.addElement("description", settings->deepObjectForKey("feed.description"_ns, title));
    text.addElement("language", settings->objectForKey("language"_ns));
    text.add("\n");
    for (id page : *pages) {
        if (left-- == 0)
            break;
        addItem(text, address, page);
    }
    text.add("</channel></rss>\n");
    return text.data();
}

} // namespace

bool addIndexes(const Site &site, Publication &publication) {
    const id value = site.settings->objectForKey("address"_ns);
    NSString *const address = value ? addressOf(site, value) : nullptr;
    if (!address)
        return !value;
    const id settings = site.settings->objectForKey("feed"_ns);
    if (settings && !qb::castOrNil<NSDictionary>(settings))
        return fail(__LINE__, kErrorNotADictionary, site.file.get(), "'feed'");
    const auto add = [&publication](NSString *name, NSData *index) {
        return isUtf8(textIn(index), name) && publication.addPage(name, index);
    };
    return add("sitemap.xml"_ns, siteMap(site, address)) && add("feed.xml"_ns, feed(site, address));
}

} // namespace publish
