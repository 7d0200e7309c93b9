#include <QBFoundation/OSAdaptor/OSProgressBar.h>

#include <QBFoundation/Runtime/MethodTable.h>

#include "System/Process.h"
#include "System/Stdio.h"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

namespace sys = qb::sys;

namespace {

constexpr std::uint32_t kWidth = 50;
constexpr double kPercentPerDot = 2.0;

// The mark of an indeterminate bar shows two neighbours of these.
constexpr std::string_view kBanner = "*********** Thank you for using ZQS. ***********";
constexpr std::uint32_t kPositions = 47; // of the mark
static_assert(kBanner.size() == kPositions + 1);

// "\r", blanks over the whole bar, "\r"; ready-made, because a bar's end must not fail.
constexpr auto kErasure = [] {
    std::array<char, kWidth + 4> text;
    text.fill(' ');
    text.front() = text.back() = '\r';
    return text;
}();

// What can't be written is lost.
void show(std::string_view text) {
    sys::print(text.data(), text.size(), stdout);
}

std::string filled(std::uint32_t current, std::uint32_t count, double percentPerTick) {
    std::string dots;
    for (std::uint32_t i = 1; i <= kWidth; ++i)
        dots += i * kPercentPerDot <= current * percentPerTick || current == count ? '#' : ' ';
    return dots + "] " + std::to_string(current) + "/" + std::to_string(count);
}

std::string withMark(std::uint32_t current) {
    const std::uint32_t step = current % kPositions;
    const bool isGoingRight = current % (2 * kPositions) == step;
    const std::uint32_t position = isGoingRight ? step : kPositions - 1 - step;
    std::string text(position, ' ');
    text += '<';
    text += kBanner.substr(position, 2);
    text += '>';
    text.append(kPositions - 1 - position, ' ');
    return text + "]";
}

} // namespace

Class *OSProgressBar::cls() {
    static const qb::Method methods[] = {
        qb::maker<"progressBar">(&OSProgressBar::setUp),
        qb::maker<"progressBarWithStart:andEnd:">(&OSProgressBar::setUpWithStart),
        qb::initialiser<"initWithStart:andEnd:">(&OSProgressBar::setUpWithStart),
        qb::method<"initializeWithStart:andEnd:">(&OSProgressBar::initializeWithStart),
        qb::method<"setCurrent:">(&OSProgressBar::setCurrent),
        qb::method<"increment">(&OSProgressBar::increment),
        qb::method<"incrementBy:">(&OSProgressBar::incrementBy),
        qb::method<"update">(&OSProgressBar::update),
        qb::method<"finish">(&OSProgressBar::finish),
    };
    static Class *const self =
        new Class("OSProgressBar", OSObject::cls(), methods, qb::construct<OSProgressBar>);
    return self;
}

OSProgressBar::~OSProgressBar() {
    OSProgressBar::finish();
}

BOOL OSProgressBar::setUpWithStart(std::uint32_t start, std::uint32_t end) {
    stdoutIsTty_ = sys::isatty(sys::fileno(stdout));
    initializeWithStart(start, end);
    return YES;
}

void OSProgressBar::initializeWithStart(std::uint32_t start, std::uint32_t end) {
    start_ = start;
    end_ = std::max(start, end);
    current_ = 0;
    count_ = end_ - start_;
    percentPerTick_ = count_ == 0 ? 100.0 : 100.0 / count_;
    isInitialized_ = true;
    update();
}

// --- Moving ---

void OSProgressBar::setCurrent(std::uint32_t value) {
    if (value == current_)
        return;
    if (value < start_)
        current_ = 0;
    else
        current_ = value <= end_ ? value - start_ : count_;
    update();
}

void OSProgressBar::increment() {
    if (!isDeterminate() || current_ < count_)
        ++current_;
    update();
}

void OSProgressBar::incrementBy(std::uint32_t amount) {
    if (isDeterminate() && current_ >= count_)
        return;
    current_ += isDeterminate() ? std::min(amount, count_ - current_) : amount;
    update();
}

// --- Drawing ---

void OSProgressBar::update() {
    if (isDrawn())
        show("\r[" + (isDeterminate() ? filled(current_, count_, percentPerTick_) : withMark(current_)));
}

void OSProgressBar::finish() {
    if (!isDrawn())
        return;
    show(isDeterminate() ? std::string_view("\n") : std::string_view(kErasure.data(), kErasure.size()));
    sys::fflush(nullptr);
    isInitialized_ = false;
}
