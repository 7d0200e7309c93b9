// Copies from memory to memory, beside one `memcpy`, and from a file to a socket, beside a loop of `read` and
// `write`.
#include <QBFoundation/Foundation/NSAutoreleasePool.h>
#include <QBFoundation/Foundation/NSData.h>
#include <QBFoundation/Foundation/NSString.h>
#include <QBFoundation/OSAdaptor/OSSocket.h>
#include <QBFoundation/OSAdaptor/OSSocketOutputStream.h>
#include <QBFoundation/QBCopyShop.h>
#include <QBFoundation/QBDataInputStream.h>
#include <QBFoundation/QBDataOutputStream.h>
#include <QBFoundation/QBFileInputStream.h>

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

// --- Memory to memory ---

// Each copy goes to memory of its own, as that of the peer does. How fast memory is copied depends on where
// in their pages the two ends begin; small copies therefore take turns among sources that begin elsewhere.
std::vector<std::string> sources(std::size_t length) {
    constexpr std::size_t kSmall = 65536, kPlaces = 8, kStep = 80;
    std::vector<std::string> texts;
    for (std::size_t i = 0; i < (length <= kSmall ? kPlaces : 1); ++i)
        texts.emplace_back(length + kStep * i, 'x');
    return texts;
}

void copyOurs(benchmark::State &state) {
    const NSAutoreleasePool outerPool;
    const auto length = static_cast<std::uint32_t>(state.range(0));
    std::vector<Ref<NSData>> data;
    for (const std::string &bytes : sources(length))
        data.push_back(NSData::initWithBytes(bytes.data(), static_cast<std::uint32_t>(bytes.size())));
    const Ref<QBCopyShop> shop = QBCopyShop::init();
    std::size_t next = 0;
    for (auto _ : state) {
        const Ref<QBDataInputStream> source = QBDataInputStream::initWithData(data[next++ % data.size()]);
        const Ref<QBDataOutputStream> target = QBDataOutputStream::initWithCapacity(length);
        benchmark::DoNotOptimize(shop->copyFromToLength(source, target, length));
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * length);
}

void copyBytes(benchmark::State &state) {
    const auto length = static_cast<std::size_t>(state.range(0));
    const std::vector<std::string> texts = sources(length);
    std::size_t next = 0;
    for (auto _ : state) {
        void *const target = std::malloc(length);
        std::memcpy(target, texts[next++ % texts.size()].data(), length);
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
        const std::string name =
            std::filesystem::temp_directory_path() / ("qb-drain-" + std::to_string(::getpid()));
        NSString *const path = NSString::stringWith(name);
        const Ref<OSSocket> listener = OSSocket::initServerSocketWithName(path);
        socket_ = OSSocket::initClientSocketWithName(path);
        peer_ = OSSocket::initAcceptSocketFromListener(listener);
        std::filesystem::remove(name);
        if (!peer_)
            throw std::runtime_error("no sockets");
        reader_ = std::thread([end = peer_->socketHandle()] {
            std::vector<char> buffer(1 << 20);
            while (::read(end, buffer.data(), buffer.size()) > 0) {
            }
        });
    }
    ~Drain() {
        socket_->shutdown();
        reader_.join();
    }
    OSSocket *socket() const { return socket_; }

private:
    Ref<OSSocket> socket_, peer_;
    std::thread reader_;
};

void sendOurs(benchmark::State &state) {
    const NSAutoreleasePool outerPool;
    const File file;
    const Drain drain;
    NSString *const path = NSString::stringWithCString(file.path());
    QBOutputStream *const target = drain.socket()->getOutputStream();
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
    const NSAutoreleasePool pool;
    const File file;
    const Drain drain;
    std::vector<char> buffer(kPiece);
    for (auto _ : state) {
        std::FILE *const source = std::fopen(file.path(), "rb");
        const int descriptor = ::fileno(source);
        for (ssize_t count; (count = ::read(descriptor, buffer.data(), buffer.size())) > 0;)
            if (::write(drain.socket()->socketHandle(), buffer.data(), static_cast<std::size_t>(count)) !=
                count)
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
