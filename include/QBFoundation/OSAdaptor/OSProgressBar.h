// A bar that shows how far something has come.
#ifndef QBFOUNDATION_OSADAPTOR_OSPROGRESSBAR_H
#define QBFOUNDATION_OSADAPTOR_OSPROGRESSBAR_H

#include <QBFoundation/OSAdaptor/OSObject.h>

#include <cstdint>

/// Draws a bar of one line, of some 60 columns, on standard output; nothing when that is no terminal. A
/// narrower terminal wraps it.
///
/// A determinate bar fills up from left to right: "[#####     ] 5/10". An indeterminate one has no end that
/// is known; a mark goes to and fro in it.
class QB_EXPORT OSProgressBar : public OSObject {
public:
    OSProgressBar() noexcept = default;
    /// Finishes the bar.
    ~OSProgressBar() override;

    static Class *cls();
    Class *classObject() const override { return cls(); }

    /// Returns an indeterminate bar, drawn.
    static OSProgressBar *progressBar() { return init().autorelease(); }
    static Ref<OSProgressBar> init() { return qb::init<OSProgressBar>(&OSProgressBar::setUp); }
    /// Returns a bar, drawn, that is full after `end` - `start` units; indeterminate when `start` is
    /// UINT32_MAX.
    static OSProgressBar *progressBarWithStart(std::uint32_t start, std::uint32_t end) {
        return initWithStart(start, end).autorelease();
    }
    /// As above, but the caller owns the result.
    static Ref<OSProgressBar> initWithStart(std::uint32_t start, std::uint32_t end) {
        return qb::init<OSProgressBar>(&OSProgressBar::setUpWithStart, start, end);
    }

    /// Makes the bar one of that range, with nothing done yet, and draws it. An `end` below `start` counts as
    /// `start`.
    virtual void initializeWithStart(std::uint32_t start, std::uint32_t end);
    /// Moves the bar to a value of its range, or to the end that is nearer, and draws it. Nothing happens for
    /// the number of units that are done.
    virtual void setCurrent(std::uint32_t value);
    /// One unit more is done. A full bar stays as it is.
    virtual void increment();
    /// As above, so many units. A full bar is not drawn again.
    virtual void incrementBy(std::uint32_t amount);
    /// Draws the bar.
    virtual void update();
    /// Ends the line, or takes an indeterminate bar away. The bar draws nothing more until it is made anew by
    /// `initializeWithStart:andEnd:`.
    virtual void finish();

protected:
    BOOL setUp() override { return setUpWithStart(kIndeterminate, kIndeterminate); }
    /// The initialiser `initWithStart:andEnd:`.
    virtual BOOL setUpWithStart(std::uint32_t start, std::uint32_t end);

private:
    static constexpr std::uint32_t kIndeterminate = UINT32_MAX; // as start

    bool isDrawn() const { return isInitialized_ && stdoutIsTty_; }
    bool isDeterminate() const { return start_ != kIndeterminate; }

    std::uint32_t start_ = 0;
    std::uint32_t end_ = 0;
    std::uint32_t current_ = 0; // units that are done
    std::uint32_t count_ = 0;   // `end_` - `start_`
    double percentPerTick_ = 0; // of a unit
    bool isInitialized_ = false;
    bool stdoutIsTty_ = false;
};

#endif
