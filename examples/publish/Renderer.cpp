#include "Renderer.h"

#include "Channels.h"
#include "Collecting.h"
#include "Files.h"
#include "Interruption.h"
#include "Messages.h"

#include <algorithm>
#include <utility>

namespace publish {

namespace {

constexpr std::uint32_t kUsualPage = 16 * 1024;

// The way from a page up to the site's root: "../" for each directory that the page is in.
NSString *wayToRoot(NSString *url) {
    const auto depth = std::count(url->view().begin(), url->view().end(), '/');
    std::string way;
    for (std::ptrdiff_t i = 0; i < depth; ++i)
        way += "../";
    return NSString::stringWith(way);
}

// An action of the profile channel, from here to the end of the scope.
class ProfiledAction {
public:
    explicit ProfiledAction(NSString *name) : name_(name) {
        profile_beginAction(profileChannel, "%s", name_->cString());
    }
    ~ProfiledAction() { profile_endAction(profileChannel, "%s", name_->cString()); }
    ProfiledAction(const ProfiledAction &) = delete;
    ProfiledAction &operator=(const ProfiledAction &) = delete;

private:
    NSString *const name_;
};

} // namespace

Renderer::Renderer(const Site &site, Publication &publication, PageFilter filter)
    : site_(site), publication_(publication), filter_(std::move(filter)),
      templates_(site.directoryFor("templates"_ns)), shared_(NSMutableDictionary::init()) {
    NSMutableArray *const pages = NSMutableArray::array();
    for (const Page &page : site.pages)
        pages->addObject(page.head);
    shared_->setObjectForKey(site.settings, "site"_ns);
    shared_->setObjectForKey(site.texts, "texts"_ns);
    shared_->setObjectForKey(pages, "pages"_ns);
}

Ref<NSMutableDictionary> Renderer::valuesFor(const Page &page) const {
    Ref<NSMutableDictionary> values = shared_->mutableCopy();
    values->setObjectForKey(page.head, "page"_ns);
    values->setObjectForKey(wayToRoot(page.url), "root"_ns);
    return values;
}

bool Renderer::renderPages() {
    Ref<OSProgressBar> progress; // its line ends with it
    if (showsProgress_)
        progress = OSProgressBar::initWithStart(0, static_cast<std::uint32_t>(site_.pages.size()));
    for (const Page &page : site_.pages) {
        const NSAutoreleasePool pool;
        const bool isRendered = !wasInterrupted() && renderPage(page);
        if (!isRendered)
            return !hasFailed() && wasInterrupted()
                       ? fail(__LINE__, kErrorInterrupted, publication_.directory())
                       : false;
        if (progress)
            progress->increment();
    }
    return true;
}

bool Renderer::renderPage(const Page &page) {
    const ProfiledAction action(page.url);
    const Ref<NSMutableDictionary> dictionary = valuesFor(page);
    Values values(dictionary, page.address(), site_.base(), images_);
    QBStringOutputStream *const body = collecting<QBStringOutputStream>(kUsualPage);
    const auto content = Template::read(page.body, page.file);
    if (!content || !content->fill(values, templates_, body))
        return false;
    dictionary->setObjectForKey(body->targetString(), "body"_ns);

    const id name = page.head->objectForKey("template"_ns);
    const std::string_view templateName = name ? name->stringValue()->view() : "page";
    bool exists = false;
    const Template *const frame = templates_.named(templateName, exists);
    if (!exists)
        return fail(__LINE__, kErrorUnknownTemplate, page.file.get(), page.templateLine,
                    NSString::stringWith(templateName));
    QBDataOutputStream *const whole = collecting<QBDataOutputStream>(kUsualPage);
    templates_.beingFilled().emplace_back(templateName);
    const bool isFilled = frame && frame->fill(values, templates_, whole);
    templates_.beingFilled().pop_back();
    NSData *const filled = isFilled ? whole->targetData() : nullptr;
    // Values may hold any bytes.
    const bool isValid = filled && isUtf8(textIn(filled), page.url);
    NSData *const text = isValid ? filter_.filtered(page.url, filled) : nullptr;
    return text && (text == filled || isUtf8(textIn(text), page.url)) && addPage(page, text);
}

bool Renderer::addPage(const Page &page, NSData *text) {
    NSData *const bytes = page.isEnciphered ? site_.cipher.enciphered(text, page.file) : text;
    return bytes && publication_.addPage(page.url, bytes);
}

} // namespace publish
