// Building archives.
#ifndef QBFOUNDATION_FOUNDATION_ARCHIVEWRITER_H
#define QBFOUNDATION_FOUNDATION_ARCHIVEWRITER_H

#include <QBFoundation/Foundation/NSCoder.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace qb::archive {

/// Collects values into an archive. A failure, once it has happened, makes all that follows do nothing; so
/// does an exception that passes through one of the operations.
class Writer {
public:
    Writer();

    /// Makes `key` that of the next value. Returns false, with nothing changed, when the object has it
    /// already.
    bool putKey(std::string_view key);
    /// Writes the value of type `code` at `place`. Objects write themselves to `coder`.
    void putValue(char code, const void *place, NSCoder *coder);
    void putBytes(std::string_view bytes);
    void putObject(id object, NSCoder *coder);
    /// Writes an object that is only mentioned.
    void putConditionalObject(id object);

    /// Returns what went wrong; null as long as nothing did.
    const char *failure() const { return failure_; }
    /// Whether an operation is under way, as it is for the objects that write themselves.
    bool isWriting() const { return operations_ != 0; }
    /// Returns the archive, which may be the moment of the failure. Nothing is to be written behind that.
    std::string finished();

private:
    struct Record {
        std::uint32_t cls; // as it is written
        std::string values;
    };
    // An object that is being written, or the root.
    struct Frame {
        std::string values;
        std::unordered_set<std::uint32_t> keys;
        std::uint32_t object;
        bool isValueClass;
    };

    class Operation;

    void putTag(unsigned char tag);
    void putCount(std::uint64_t count);
    void putNamed(unsigned char tag, std::string_view name);
    void putInteger(std::int64_t value);
    void putReal(double value);
    void writeObject(std::uint32_t index, NSCoder *coder);
    void begin(std::uint32_t index);
    void end();
    bool mayCloseCircle(std::uint32_t index) const;
    std::string_view containerValuesOf(std::size_t index) const;
    std::uint32_t indexOfObject(id object);
    std::uint32_t indexOfName(std::string_view name);

    std::vector<Frame> frames_; // the root's first
    std::vector<Record> records_;
    std::vector<Ref<NSObject>> objects_; // kept, so that no other object gets the address of one
    std::unordered_map<id, std::uint32_t> indexes_;
    std::vector<std::string> names_;
    std::unordered_map<std::string, std::uint32_t> nameIndexes_;
    const char *failure_ = nullptr;
    unsigned operations_ = 0;    // that are under way
    bool mayHaveCircle_ = false; // of containers
};

} // namespace qb::archive

#endif
