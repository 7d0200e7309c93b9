// A site as it is read: its settings and its pages.
#ifndef PUBLISH_SITE_H
#define PUBLISH_SITE_H

#include "Cipher.h"

#include <QBFoundation/QBFoundation.h>

#include <vector>

namespace publish {

/// A page: its head's values, and its body, which is a template.
struct Page {
    Ref<NSString> file; // that it was read from
    Ref<NSString> url;  // the path where it goes, relative to the site's root
    Ref<NSMutableDictionary> head;
    int templateLine = 1;      // of the file, where the head names the template
    Ref<NSString> body;        // HTML
    bool isEnciphered = false; // where it goes

    /// Returns the path as an address, which templates have under "url".
    NSString *address() const;
};

/// The settings of `site.plist` and the pages.
struct Site {
    Ref<NSString> directory;
    Ref<NSString> file; // with the settings
    Ref<NSMutableDictionary> settings;
    Ref<NSMutableDictionary> texts;                         // the files that the settings name under "texts"
    Ref<NSMutableArray> textFiles = NSMutableArray::init(); // their paths
    std::vector<Page> pages;                                // in the order of their paths
    Cipher cipher;                                          // for the pages that want one

    /// The directory that the names of files are relative to.
    NSString *base() const;
    /// The directory that the settings name under `key`; one of that name unless they do.
    NSString *directoryFor(NSString *key) const;
    /// Whether there are assets: the settings name a directory, or there is one of that name.
    bool hasAssets() const;
};

/// Does what a page's head says: whether it is enciphered, which its address shows, and its date in the forms
/// that readers want. Returns false, with an error raised, when that is no date.
bool settle(Page &page);

/// Whether a source directory and the target are not inside of each other; an error is raised when they are.
bool isApart(NSString *directory, NSString *target);

/// Reads the site in `directory`, which goes to `target`. `overrides`: dotted keys of settings, each followed
/// by the value to use. Returns false, with an error raised, when a part of it can't be read or is not apart
/// from the target, or a setting is not there to be replaced or added to.
bool readSite(NSString *directory, NSString *target, NSArray *overrides, Site &site);

} // namespace publish

#endif
