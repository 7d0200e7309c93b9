#include "OwnFiles.h"

#include "Files.h"
#include "Messages.h"

namespace publish {

namespace {

NSData *propertyListOf(NSDictionary *dictionary) {
    QBPropertyListOutputStream *const text = QBPropertyListOutputStream::streamWithCapacity(4096);
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

bool writeManifest(NSArray *files, NSString *file) {
    return writeFile(file, propertyListOf(NSDictionary::dictionaryWith({{"files"_ns, files}})));
}

NSArray *readManifest(NSString *file) {
    NSDictionary *const manifest = readDictionary(file);
    return manifest ? pathsIn(manifest, "files"_ns, file) : nullptr;
}

} // namespace publish
