// Making a site's pages.
#ifndef PUBLISH_RENDERER_H
#define PUBLISH_RENDERER_H

#include "PageFilter.h"
#include "Publication.h"
#include "Site.h"
#include "Template.h"

namespace publish {

/// Fills each page's body and then its template, filters the result, and hands it to a publication.
class Renderer {
public:
    Renderer(const Site &site, Publication &publication, PageFilter filter);

    /// Whether a bar on the terminal shows how far the pages have come.
    void setShowsProgress(bool shows) { showsProgress_ = shows; }
    /// Renders all pages. Returns false, with an error raised, when one of them can't be made.
    bool renderPages();
    /// Returns the paths of the images that pages were made of, or would have been.
    NSSet *images() const { return images_; }

private:
    bool renderPage(const Page &page);
    bool addPage(const Page &page, NSData *text);
    Ref<NSMutableDictionary> valuesFor(const Page &page) const;

    const Site &site_;
    Publication &publication_;
    PageFilter filter_;
    TemplateStore templates_;
    bool showsProgress_ = false;
    Ref<NSMutableDictionary> shared_; // the values that every page sees
    Ref<NSMutableSet> images_ = NSMutableSet::init();
};

} // namespace publish

#endif
