#include "OverlayWindow.h"

#include "DesktopComposition.h"
#include "OverlayLayout.h"
#include "SpeechSynthesizer.h"
#include "SubtitleLabel.h"
#include "SubtitleText.h"
#include "ThreadChecks.h"

#include <QGuiApplication>
#include <QPaintEvent>
#include <QPainter>
#include <QPainterPath>
#include <QWindow>

#include <utility>

namespace orv {

namespace {

constexpr Qt::WindowFlags overlayFlags =
    Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint | Qt::BypassWindowManagerHint |
    Qt::WindowTransparentForInput | Qt::WindowDoesNotAcceptFocus | Qt::NoDropShadowWindowHint;

QPainterPath roundedFrame(const QRectF& frame, double inset) {
    const double radius = OverlayLengths::cornerRadius - inset;
    QPainterPath path;
    path.addRoundedRect(frame.adjusted(inset, inset, -inset, -inset), radius, radius);
    return path;
}

QColor opaque(QColor color) {
    color.setAlpha(255);
    return color;
}

} // namespace

OverlayWindow::OverlayWindow(OverlayEnvironment environment)
    : QWidget(nullptr, overlayFlags)
    , environment_(std::move(environment))
    , originalField_(new SubtitleLabel(this))
    , textField_(new SubtitleLabel(this))
    , choices_(environment_.choices) {
    setAttribute(Qt::WA_TranslucentBackground);
    setAttribute(Qt::WA_ShowWithoutActivating);
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setAttribute(Qt::WA_QuitOnClose, false);
    setAttribute(Qt::WA_X11NetWmWindowTypeNotification);
    setFocusPolicy(Qt::NoFocus);
    originalField_->hide();
    hideTimer_.setSingleShot(true);
    hideTimer_.setTimerType(Qt::PreciseTimer);
    hideTimer_.callOnTimeout(this, [this] {
        current_.reset();
        hide();
    });
    connect(qGuiApp, &QGuiApplication::primaryScreenChanged, this,
            &OverlayWindow::followMainScreen);
    followMainScreen(QGuiApplication::primaryScreen());
    frames_ = overlayFrames(0, 90, mainScreen()); // 120 high before the first result.
    applyAppearance();
}

OverlayWindow::~OverlayWindow() = default;

void OverlayWindow::prepare() {
    ORV_ON_MAIN();
    if (choices_.isShown) {
        create();
        // The first text of a program takes tens of milliseconds: the fonts are looked for.
        layoutForContent(windowTitle(), windowTitle() + u'…', SubtitleFonts::system(),
                         mainScreen());
    }
    if (choices_.isSpoken) {
        environment_.speech.prepare();
    }
}

void OverlayWindow::take(const Result& result) {
    ORV_ON_MAIN();
    if (choices_.isShown) {
        showTranslation(result);
    } else if (!readableText(subtitleLines(result, false).translation).isEmpty()) {
        current_ = result;
        hideTimer_.start(environment_.timings.hide);
    }
}

void OverlayWindow::showTranslation(const Result& result) {
    // Decided here: it must not take the place of a result that is still on its way.
    if (readableText(subtitleLines(result, false).translation).isEmpty()) {
        return;
    }
    {
        const std::lock_guard lock(mutex_);
        const bool underWay = waiting_.has_value();
        waiting_ = result;
        if (underWay) {
            return;
        }
    }
    handle_.post([this] { present(); });
}

void OverlayWindow::present() {
    ORV_ON_MAIN();
    std::optional<Result> result;
    {
        const std::lock_guard lock(mutex_);
        result = std::exchange(waiting_, std::nullopt);
    }
    if (!result) {
        return; // Forgotten on its way.
    }
    current_ = std::move(result);
    if (!choices_.isShown) { // Switched off while it was on its way.
        hideTimer_.start(environment_.timings.hide);
        return;
    }
    showLines();
    if (lines_.spoken && choices_.isSpoken) {
        environment_.speech.speak(*lines_.spoken);
    }
    hideTimer_.start(environment_.timings.hide);
}

void OverlayWindow::showLines() {
    lines_ = subtitleLines(*current_, choices_.showOriginal);
    composited_ = environment_.isComposited();
    unpainted_ = true;
    arrange();
    bringToFront();
}

void OverlayWindow::endSubtitles() {
    ORV_ON_MAIN();
    {
        const std::lock_guard lock(mutex_);
        waiting_.reset();
    }
    hideTimer_.stop();
    current_.reset();
    environment_.speech.stop();
    hide();
}

void OverlayWindow::setChoices(const SubtitleChoices& choices) {
    ORV_ON_MAIN();
    const bool looksTheSame = choices.appearance == choices_.appearance;
    const bool wasShown = choices_.isShown;
    const bool wasSpoken = choices_.isSpoken;
    choices_ = choices;
    if (!looksTheSame) {
        applyAppearance();
    }
    if (wasSpoken && !choices_.isSpoken) {
        environment_.speech.stop();
    }
    if (wasShown && !choices_.isShown) {
        hide();
    } else if (!wasShown && choices_.isShown && current_) {
        showLines();
    }
}

void OverlayWindow::applyAppearance() {
    originalField_->setColor(choices_.appearance.original);
    textField_->setColor(choices_.appearance.translation);
    update();
}

void OverlayWindow::arrange() {
    OverlayLayout layout = layoutForContent(lines_.original, lines_.translation,
                                            SubtitleFonts::system(), mainScreen());
    frames_ = layout.frames;
    originalField_->setSubtitle(std::move(layout.original));
    textField_->setSubtitle(std::move(layout.translation));
    place();
}

void OverlayWindow::place() {
    const int margin = shadowMargin();
    const QMargins around(margin, margin, margin, margin);
    setGeometry(frames_.window.marginsAdded(around));
    textField_->setGeometry(frames_.translation.translated(margin, margin));
    originalField_->setGeometry(frames_.original.translated(margin, margin));
    originalField_->setVisible(!frames_.original.isEmpty());
    if (composited_) {
        clearMask();
    } else {
        setMask(QRegion(roundedFrame(rect(), 0).toFillPolygon().toPolygon()));
    }
}

void OverlayWindow::bringToFront() {
    if (!isVisible()) {
        show();
        declareOwnShadow(*windowHandle(), shadowMargin());
    }
    raise();
    repaint();
}

void OverlayWindow::followMainScreen(QScreen* screen) {
    ORV_ON_MAIN();
    if (followed_) {
        followed_->disconnect(this);
    }
    followed_ = screen;
    const auto moved = [this] {
        if (isVisible()) {
            arrange();
            bringToFront();
        }
    };
    if (screen != nullptr) {
        connect(screen, &QScreen::geometryChanged, this, moved);
        moved();
    }
}

QRect OverlayWindow::mainScreen() const {
    return followed_ ? followed_->geometry() : QRect();
}

void OverlayWindow::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const int margin = shadowMargin();
    const QRect frame = rect().marginsRemoved({margin, margin, margin, margin});
    if (composited_) {
        shadow_.draw(painter, frame, choices_.appearance.background.alphaF());
    }
    const QColor background =
        composited_ ? choices_.appearance.background : opaque(choices_.appearance.background);
    if (choices_.appearance.border) {
        // The border covers the edge of the background, which would shine through round it.
        constexpr double width = OverlayLengths::borderWidth;
        if (!composited_) {
            painter.fillRect(rect(), *choices_.appearance.border);
        }
        painter.fillPath(roundedFrame(frame, width / 2), background);
        painter.strokePath(roundedFrame(frame, width / 2),
                           QPen(*choices_.appearance.border, width));
    } else if (composited_) {
        painter.fillPath(roundedFrame(frame, 0), background);
    } else {
        painter.fillRect(rect(), background);
    }
    if (std::exchange(unpainted_, false)) {
        // The labels come after this, and then the hand-over to the desktop.
        post(this, [this] { Q_EMIT resultPainted(); });
    }
}

} // namespace orv
