// Copies from memory to memory, beside one `memcpy`, and from a file to a socket, beside a loop of `read` and
// `write`.
#include <QBFoundation/Foundation/NSAutoreleasePool.h>
#include <QBFoundation/Foundation/NSData.h>
#include <QBFoundation/Foundation/NSString.h>
#include <QBFoundation/QBCopyShop.h>
#include <QBFoundation/QBDataInputStream.h>
#include <QBFoundation/QBDataOutputStream.h>
#include <QBFoundation/QBFileInputStream.h>
#include <QBFoundation/QBOutputStream.h>

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

// --- Memory to memory ---

// Each copy goes to memory of its own, as that of the peer does.
void copyOurs(benchmark::State &state) {
    const NSAutoreleasePool outerPool;
    const std::string bytes(static_cast<std::size_t>(state.range(0)), 'x');
    const auto length = static_cast<std::uint32_t>(bytes.size());
    NSData *const data = NSData::dataWithBytes(bytes.data(), length);
    const Ref<QBCopyShop> shop = QBCopyShop::init();
    for (auto _ : state) {
        const Ref<QBDataInputStream> source = QBDataInputStream::initWithData(data);
        const Ref<QBDataOutputStream> target = QBDataOutputStream::initWithCapacity(length);
        benchmark::DoNotOptimize(shop->copyFrom(source, target));
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * length);
}

void copyBytes(benchmark::State &state) {
    const std::string bytes(static_cast<std::size_t>(state.range(0)), 'x');
    for (auto _ : state) {
        void *const target = std::malloc(bytes.size());
        std::memcpy(target, bytes.data(), bytes.size());
        benchmark::DoNotOptimize(target);
        benchmark::ClobberMemory();
        std::free(target);
    }
    state.SetBytesProcessed(state.iterations() * state.range(0));
}

// --- File to socket ---

constexpr std::size_t kFileLength = 16 << 20;
constexpr std::size_t kPiece = 65536;

/// A file of some length.
class File {
public:
    File() : path_(std::filesystem::temp_directory_path() / ("qb-copy-" + std::to_string(::getpid()))) {
        std::FILE *const file = std::fopen(path_.c_str(), "wb");
        const std::string bytes(kFileLength, 'x');
        if (!file || std::fwrite(bytes.data(), 1, bytes.size(), file) != bytes.size() ||
            std::fclose(file) != 0)
            throw std::runtime_error("no file to read");
    }
    ~File() { std::filesystem::remove(path_); }
    const char *path() const { return path_.c_str(); }

private:
    std::filesystem::path path_;
};

/// A socket whose peer takes all that comes.
class Drain {
public:
    Drain() {
        if (::socketpair(AF_UNIX, SOCK_STREAM, 0, ends_) != 0)
            throw std::runtime_error("no sockets");
        reader_ = std::thread([end = ends_[1]] {
            std::vector<char> buffer(1 << 20);
            while (::read(end, buffer.data(), buffer.size()) > 0) {
            }
        });
    }
    ~Drain() {
        ::shutdown(ends_[0], SHUT_RDWR);
        reader_.join();
        ::close(ends_[0]);
        ::close(ends_[1]);
    }
    int end() const { return ends_[0]; }

private:
    int ends_[2];
    std::thread reader_;
};

/// A client's stream that sends what it gets.
class Sender : public QBOutputStream {
public:
    explicit Sender(int socket) : socket_(socket) {}
    void _writeBuffer(const void *buffer, std::uint32_t length) override {
        if (::send(socket_, buffer, length, 0) != static_cast<ssize_t>(length))
            throw std::runtime_error("not sent");
    }

private:
    int socket_;
};

void sendOurs(benchmark::State &state) {
    const NSAutoreleasePool outerPool;
    const File file;
    const Drain drain;
    NSString *const path = NSString::stringWithCString(file.path());
    const Ref<Sender> target = Ref<Sender>::adopt(new Sender(drain.end()));
    const Ref<QBCopyShop> shop = QBCopyShop::init();
    for (auto _ : state) {
        const NSAutoreleasePool pool;
        const Ref<QBFileInputStream> source = QBFileInputStream::initWithFile(path);
        if (shop->copyFrom(source, target) != static_cast<std::int32_t>(kFileLength))
            state.SkipWithError("not copied");
        source->close();
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(kFileLength));
}

void sendInALoop(benchmark::State &state) {
    const File file;
    const Drain drain;
    std::vector<char> buffer(kPiece);
    for (auto _ : state) {
        std::FILE *const source = std::fopen(file.path(), "rb");
        const int descriptor = ::fileno(source);
        for (ssize_t count; (count = ::read(descriptor, buffer.data(), buffer.size())) > 0;)
            if (::write(drain.end(), buffer.data(), static_cast<std::size_t>(count)) != count)
                state.SkipWithError("not written");
        std::fclose(source);
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(kFileLength));
}

const bool kRegistered = [] {
    for (const std::int64_t length : {65'536, 1 << 20, 16 << 20}) {
        benchmark::RegisterBenchmark("CopyShop/memory/ours", &copyOurs)->Arg(length);
        benchmark::RegisterBenchmark("CopyShop/memory/memcpy", &copyBytes)->Arg(length);
    }
    benchmark::RegisterBenchmark("CopyShop/file-to-socket/ours", &sendOurs)->UseRealTime();
    benchmark::RegisterBenchmark("CopyShop/file-to-socket/read-write", &sendInALoop)->UseRealTime();
    return true;
}();

} // namespace
