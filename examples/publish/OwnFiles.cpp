#include "OwnFiles.h"

#include "Collecting.h"
#include "Files.h"
#include "Messages.h"

#include <array>

namespace publish {

namespace {

NSData *propertyListOf(NSDictionary *dictionary) {
    QBPropertyListOutputStream *const text = collecting<QBPropertyListOutputStream>(4096);
    text->writeObject(dictionary);
    text->writeNL();
    return text->targetData();
}

// Returns the list that `dictionary`, read from `file`, has under `key`; empty when it has none, nil, with an
// error raised, when it is malformed or leads out of the site.
NSArray *pathsIn(NSDictionary *dictionary, NSString *key, NSString *file) {
    const id value = dictionary->objectForKey(key);
    auto *list = value ? qb::castOrNil<NSArray>(value) : NSArray::array();
    if (!list) {
        fail(__LINE__, kErrorNotAList, file, 1, key);
        return nullptr;
    }
    for (id element : *list) {
        auto *path = qb::castOrNil<NSString>(element);
        if (!path || !isSitePath(path)) {
            fail(__LINE__, kErrorUnsafePath, file, element->stringValue());
            return nullptr;
        }
    }
    return list;
}

} // namespace

bool writeFile(NSString *file, NSData *text) {
    QBFileOutputStream *const stream = QBFileOutputStream::streamWithFile(file);
    if (!stream)
        return false;
    stream->setSynchronizes(NO);
    stream->writeObject(text);
    stream->close();
    return !hasFailed();
}

bool writePlan(const Plan &plan, NSString *file) {
    NSDictionary *const journal =
        NSDictionary::dictionaryWith({{"removed"_ns, plan.removed.get()}, {"moved"_ns, plan.moved.get()}});
    QBFileOutputStream::writeToFile(propertyListOf(journal), file, /*atomically=*/YES);
    return !hasFailed();
}

bool readPlan(NSString *file, Plan &plan) {
    NSDictionary *const journal = readDictionary(file);
    NSArray *const removed = journal ? pathsIn(journal, "removed"_ns, file) : nullptr;
    NSArray *const moved = removed ? pathsIn(journal, "moved"_ns, file) : nullptr;
    if (!moved)
        return false;
    plan = {removed, moved};
    return true;
}

bool writeManifest(const Manifest &manifest, NSString *file) {
    return writeFile(file, propertyListOf(NSDictionary::dictionaryWith(
                               {{"files"_ns, manifest.files.get()}, {"md5"_ns, manifest.digests.get()}})));
}

bool readManifest(NSString *file, Manifest &manifest) {
    NSDictionary *const read = readDictionary(file);
    NSArray *const files = read ? pathsIn(read, "files"_ns, file) : nullptr;
    if (!files)
        return false;
    const id value = read->objectForKey("md5"_ns);
    auto *digests = value ? qb::castOrNil<NSDictionary>(value) : NSDictionary::dictionary();
    if (!digests)
        return fail(__LINE__, kErrorNotADictionary, file, "'md5'");
    manifest = {files, digests};
    return true;
}

NSString *digestOf(NSData *text) {
    QBMD5OutputStream *const digest = QBMD5OutputStream::stream();
    digest->writeBuffer(text->bytes(), text->length());
    return digest->md5Hash();
}

NSString *digestOfFile(NSString *file) {
    QBFileInputStream *const content = QBFileInputStream::streamWithFile(file);
    if (!content)
        return nullptr;
    QBMD5OutputStream *const digest = QBMD5OutputStream::stream();
    std::array<char, 64 * 1024> buffer;
    for (std::int32_t length = 1; length > 0;) {
        length = content->readBuffer(buffer.data(), buffer.size());
        if (length > 0)
            digest->writeBuffer(buffer.data(), static_cast<std::uint32_t>(length));
    }
    content->close();
    return hasFailed() ? nullptr : digest->md5Hash();
}

} // namespace publish
