#pragma once

#include "Output.h"
#include "OverlayFrames.h"
#include "PostTarget.h"
#include "Result.h"
#include "SoftShadow.h"
#include "SubtitleChoices.h"
#include "SubtitleLines.h"

#include <QPointer>
#include <QScreen>
#include <QTimer>
#include <QWidget>

#include <chrono>
#include <functional>
#include <mutex>
#include <optional>

namespace orv {

class SpeechSynthesizer;
class SubtitleLabel;

/// The fixed times of the subtitle window.
struct OverlayTimings {
    std::chrono::milliseconds hide = std::chrono::seconds(6); ///< From a result to hiding.
};

/// What the window is given. The references outlive it.
struct OverlayEnvironment {
    SpeechSynthesizer& speech;
    std::function<bool()> isComposited; ///< Whether translucent windows are possible now.
    SubtitleChoices choices;            ///< Until others are handed in.
    OverlayTimings timings = {};
};

/// The subtitles on the screen: the latest result in a borderless window near the bottom of the
/// main screen, above all other windows, on every virtual desktop, deaf to mouse and keyboard. It
/// grows with the text and hides some seconds after the last result.
///
/// It is an override-redirect window on X11: the window manager, which keeps full-screen windows
/// above all others it manages, has no say over it.
///
/// Where the desktop blends no windows, the background is opaque and there is no shadow.
///
/// Of results that come faster than the main thread gets to them only the latest is shown and
/// spoken.
///
/// Lives on the main thread.
class OverlayWindow : public QWidget, public Output {
    Q_OBJECT

  public:
    explicit OverlayWindow(OverlayEnvironment environment);
    ~OverlayWindow() override;

    /// Makes ready what the first result would otherwise wait for: the fonts, the window, and the
    /// voice if the user wants one. Called at the start of a run.
    void prepare();

    /// Shows the result if the user wants subtitles on the screen; else keeps it for as long as it
    /// would be shown.
    void take(const Result& result) override;

    /// Shows a result, and speaks it if the user wants that. Callable from any thread while the
    /// window lives; the work is done on the main thread, later. A translation without anything to
    /// read counts as empty, so that the source text becomes the large line; when that has nothing
    /// to read either, the result changes nothing. What there is to read `readableText` decides:
    /// neither blanks nor control characters.
    void showTranslation(const Result& result);

    /// What holds from now on. Colours change at once, also while the window is shown. Subtitles
    /// that are switched off go at once; switched on, they show what would still be up, without
    /// speaking it. Speech that is switched off ends. The rest holds from the next result on.
    void setChoices(const SubtitleChoices& choices);

    /// The end of a run: hides the window, ends speech at once, and forgets a result that is still
    /// on its way.
    void endSubtitles();

    /// Where the subtitles are on the desktop, without the shadow.
    const OverlayFrames& frames() const { return frames_; }

    const SubtitleLabel& textField() const { return *textField_; }

    const SubtitleLabel& originalField() const { return *originalField_; }

  Q_SIGNALS:
    /// The latest result has been drawn for the first time and handed to the desktop.
    void resultPainted();

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    void applyAppearance();
    void present();
    void showLines();
    void arrange();
    void place();
    void bringToFront();
    void followMainScreen(QScreen* screen);
    QRect mainScreen() const;

    int shadowMargin() const { return composited_ ? SoftShadow::margin : 0; }

    OverlayEnvironment environment_;
    std::mutex mutex_;
    std::optional<Result> waiting_; ///< Guarded by `mutex_`.

    SubtitleLabel* originalField_;
    SubtitleLabel* textField_;
    std::optional<Result> current_; ///< What is shown, or would be, until `hideTimer_` ends.
    SubtitleLines lines_;
    SubtitleChoices choices_;
    OverlayFrames frames_;
    SoftShadow shadow_;
    QPointer<QScreen> followed_;
    bool composited_ = true;
    bool unpainted_ = false; ///< The latest result has not been drawn yet.
    QTimer hideTimer_;
    PostTarget target_;
    const PostTarget::Handle handle_ = target_.handle(); ///< For other threads.
};

} // namespace orv
