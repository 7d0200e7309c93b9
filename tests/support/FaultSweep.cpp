#include "support/FaultSweep.h"

#include "support/OpenDescriptors.h"

#include <exception>
#include <filesystem>
#include <map>
#include <optional>
#include <sys/fsuid.h>
#include <sys/stat.h>

namespace fs = std::filesystem;

namespace {

// --- Kinds of faults ---
//
// Each strikes as long as it lives, in one of its ways, at the call or allocation of that index. Without hits
// there is none of that index any more.

struct Way {
    const char *name;
    int value;          // an error's number, or a size
    unsigned times = 1; // 0: from then on
};

/// A call fails, a storm of signals interrupts it, or it transfers less than it was asked to.
class CallFault {
public:
    static constexpr Way kWays[] = {{"EIO", EIO},       {"ENOSPC", ENOSPC},  {"EACCES", EACCES},
                                    {"ENOMEM", ENOMEM}, {"EINTR", EINTR, 4}, {"one byte", 0}};

    /// Whether files don't show what such a failure may have lost, so that nothing but telling of it will do.
    static bool isToBeTold(const Way &way, Call call) {
        constexpr Call kLasting[] = {Call::fsync, Call::fflush, Call::fclose};
        return way.value != 0 && way.value != EINTR &&
               std::ranges::find(kLasting, call) != std::end(kLasting);
    }

    CallFault(const Way &way, unsigned index, const TemporaryDirectory &) {
        if (way.value)
            fault_.emplace(Call::any, index, way.times, way.value);
        else
            fault_.emplace(Call::any, index, way.times, sys::ShortTransfer{1});
    }
    unsigned hits() const { return fault_->hits(); }
    Call struck() const { return fault_->struck(); }

private:
    std::optional<Fault> fault_;
};

/// An allocation fails, or all from it on.
class MemoryFault {
public:
    static constexpr Way kWays[] = {{"no block", ENOMEM, 1}, {"no more blocks", ENOMEM, 0}};

    MemoryFault(const Way &way, unsigned index, const TemporaryDirectory &) : fault_(index, way.times) {}
    unsigned hits() const { return fault_.hits(); }
    Call struck() const { return Call::any; }

private:
    AllocationFault fault_;
};

/// What strikes no call of its own.
struct Lasting {
    Lasting() = default;
    Lasting(const Way &, unsigned, const TemporaryDirectory &) {} // nothing at all

    unsigned hits() const { return 0; }
    Call struck() const { return Call::any; }
};

/// Files can't become longer than so many bytes.
struct SizeLimit : Lasting {
    static constexpr Way kWays[] = {{"files of 0 bytes", 0},
                                    {"files of 1 byte", 1},
                                    {"files of 1000 bytes", 1000},
                                    {"files of 70000 bytes", 70000}};

    SizeLimit(const Way &way, unsigned, const TemporaryDirectory &) : signal_(std::signal(SIGXFSZ, SIG_IGN)) {
        ::getrlimit(RLIMIT_FSIZE, &old_);
        const rlimit limit{static_cast<rlim_t>(way.value), old_.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~SizeLimit() {
        ::setrlimit(RLIMIT_FSIZE, &old_);
        std::signal(SIGXFSZ, signal_);
    }

    void (*signal_)(int);
    rlimit old_;
};

/// The directory can't be changed, not even by root, which is nobody to the file system for that time.
struct ReadOnlyDirectory : Lasting {
    static constexpr Way kWays[] = {{"read-only directory", 0}};

    ReadOnlyDirectory(const Way &, unsigned, const TemporaryDirectory &directory) : path_(directory.path()) {
        fs::permissions(fs::path(path_).parent_path(), fs::perms(0711));
        fs::permissions(path_, fs::perms(0555));
        if (::geteuid() == 0)
            ::setfsuid(kNobody);
    }
    ~ReadOnlyDirectory() {
        ::setfsuid(::geteuid());
        fs::permissions(path_, fs::perms(0755));
    }

    static constexpr uid_t kNobody = 65534;
    std::string path_;
};

// --- What came of a use ---

struct Outcome {
    Outcome() { // what is put there later is no new block
        delivered.reserve(1 << 18);
        told.reserve(1 << 12);
    }

    std::string delivered;
    std::string told; // the errors' numbers, the exception's text; empty when there was none
    std::map<std::string, std::string> files;
    std::int64_t leakedBlocks = 0;
    std::ptrdiff_t leakedDescriptors = 0;
    unsigned hits = 0;
    Call struck = Call::any;
};

/// The text with "." for the directory's path.
std::string relative(std::string text, const TemporaryDirectory &directory) {
    const std::string &path = directory.path();
    for (std::size_t at; (at = text.find(path)) != std::string::npos;)
        text.replace(at, path.size(), ".");
    return text;
}

/// What stands under each name below the directory: its mode and its content.
std::map<std::string, std::string> filesIn(const TemporaryDirectory &directory) {
    std::map<std::string, std::string> files;
    for (const fs::directory_entry &entry : fs::recursive_directory_iterator(directory.path())) {
        const std::string name = entry.path().native().substr(directory.path().size() + 1);
        struct stat status {};
        ::lstat(entry.path().c_str(), &status);
        std::string &text = files[name] = std::to_string(status.st_mode) + " ";
        if (S_ISLNK(status.st_mode))
            text += relative(fs::read_symlink(entry.path()), directory);
        else if (S_ISREG(status.st_mode))
            text += directory.read(name);
    }
    return files;
}

template <class Kind>
Outcome outcomeOf(const Use &use, const TemporaryDirectory &directory, const Way &way, unsigned index) {
    Outcome outcome;
    const std::ptrdiff_t descriptors = openDescriptors();
    const std::int64_t blocks = blocksInUse();
    {
        const Kind fault(way, index, directory);
        try {
            const NSAutoreleasePool pool;
            outcome.delivered += use.act(directory);
        } catch (const std::exception &exception) {
            outcome.told += exception.what();
        }
        outcome.hits = fault.hits();
        outcome.struck = fault.struck();
    }
    if (ERRORHANDLER->errorState() != ERRORSTATE_OK)
        outcome.told += inOwnPool(takenErrors);
    outcome.leakedBlocks = blocksInUse() - blocks;
    outcome.leakedDescriptors = openDescriptors() - descriptors;
    outcome.delivered = relative(outcome.delivered, directory);
    outcome.files = filesIn(directory);
    return outcome;
}

// --- The sweep ---

/// One use under all faults.
class Sweep {
public:
    explicit Sweep(const Use &use) : use_(use) {}

    void run() {
        const NSAutoreleasePool pool;
        constexpr Way kNone = {"no fault", 0};
        whole_ = perform<Lasting>(kNone, 0); // also for what is made once and kept
        EXPECT_EQ(whole_.told, "") << "without a fault";
        expectFaultless(perform<Lasting>(kNone, 0), "without a fault");
        runAll<CallFault>();
        runAll<MemoryFault>();
        runAll<SizeLimit>();
        runAll<ReadOnlyDirectory>();
    }

private:
    static constexpr unsigned kMostCalls = 100000; // no use makes as many

    template <class Kind>
    void runAll() {
        for (const Way &way : Kind::kWays) {
            bool goesOn = true;
            for (unsigned index = 0; goesOn; ++index) {
                const Outcome outcome = performTwice<Kind>(way, index);
                const std::string fault = std::string(way.name) + " in " +
                                          std::string(sys::nameOfCall(outcome.struck)) + ", the call " +
                                          std::to_string(index);
                expectFaultless(outcome, fault);
                EXPECT_TRUE(isTold(outcome) || !CallFault::isToBeTold(way, outcome.struck)) << fault;
                goesOn = outcome.hits > 0 && !testing::Test::HasFailure();
                ASSERT_LT(index, kMostCalls);
            }
        }
    }

    template <class Kind>
    Outcome perform(const Way &way, unsigned index) {
        // As long as names can be, and no UTF-8.
        const TemporaryDirectory directory(std::string(255, '\xFF'));
        use_.prepare(directory);
        before_ = filesIn(directory);
        return outcomeOf<Kind>(use_, directory, way, index);
    }

    // Again, when blocks are missing: what is made once and kept then is no leak.
    template <class Kind>
    Outcome performTwice(const Way &way, unsigned index) {
        Outcome outcome = perform<Kind>(way, index);
        for (int again = 0; again < 2 && outcome.leakedBlocks > 0; ++again)
            outcome = perform<Kind>(way, index);
        return outcome;
    }

    bool isTold(const Outcome &outcome) const {
        return !outcome.told.empty() ||
               std::ranges::find(use_.answering, outcome.struck) != use_.answering.end();
    }

    void expectFaultless(const Outcome &outcome, const std::string &fault) const {
        if (!isTold(outcome)) {
            EXPECT_EQ(outcome.delivered, whole_.delivered) << "and nothing was told: " << fault;
            EXPECT_TRUE(outcome.files == whole_.files) << "and nothing was told: " << fault;
        }
        EXPECT_LE(outcome.leakedBlocks, 0) << fault << ", told " << outcome.told;
        EXPECT_EQ(outcome.leakedDescriptors, 0) << fault << ", told " << outcome.told;
        for (const auto &[name, text] : outcome.files)
            EXPECT_TRUE(mayStand(name, text)) << name << " is no old or new file: " << fault;
        for (const auto &[name, text] : before_)
            EXPECT_TRUE(outcome.files.contains(name) || !whole_.files.contains(name))
                << name << " is lost: " << fault;
    }

    bool mayStand(const std::string &name, const std::string &text) const {
        const auto isIn = [&](const auto &files) {
            const auto found = files.find(name);
            return found != files.end() && found->second == text;
        };
        return isIn(before_) || isIn(whole_.files) ||
               (use_.leaves == Leaves::parts && whole_.files.contains(name)) ||
               use_.leaves == Leaves::anything;
    }

    const Use &use_;
    Outcome whole_; // without a fault
    std::map<std::string, std::string> before_;
};

} // namespace

TEST_P(FaultSweepTest, IsWholeOrTellsAndLeavesNothing) {
    static QBErrorHandler *const handler = QBErrorHandler::init().detach();
    ERRORHANDLER = handler;
    EXPECT_TRUE(runOnSmallStack([] { Sweep(GetParam()).run(); }));
}

void PrintTo(const Use &use, std::ostream *stream) {
    *stream << use.name;
}
