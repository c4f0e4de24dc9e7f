// Nothing is cut off, in any language. Also run at twice the scale.

#include "QuantityTexts.h"
#include "SettingsWindowFixture.h"
#include "WhisperModels.h"

#include <QLabel>
#include <QScrollArea>
#include <QScrollBar>

using namespace Qt::StringLiterals;

namespace orv::test {

namespace {

class SettingsFitTest : public SettingsWindowFixture,
                        public ::testing::WithParamInterface<UILanguage::Case> {
  protected:
    SettingsFitTest() { l10n.setCurrent(GetParam()); }

    /// Whether all of a control's text is on screen.
    static void expectWhole(const QWidget& widget, const QString& text) {
        const auto* label = qobject_cast<const QLabel*>(&widget);
        const bool wraps = label != nullptr && label->wordWrap();
        const int height =
            wraps ? widget.heightForWidth(widget.width()) : widget.sizeHint().height();
        EXPECT_GE(widget.height(), height) << qPrintable(text);
        if (!wraps) {
            EXPECT_GE(widget.width(), widget.sizeHint().width()) << qPrintable(text);
        }
    }

    void expectAllWhole() {
        for (QWidget* widget : window->findChildren<QWidget*>()) {
            if (!widget->isVisible() || widget->inherits("orv::ElidedLabel")) {
                continue;
            }
            if (const auto* label = qobject_cast<const QLabel*>(widget)) {
                expectWhole(*widget, label->text());
            } else if (const auto* button = qobject_cast<const QAbstractButton*>(widget)) {
                expectWhole(*widget, button->text());
            }
            // Nothing reaches beyond its page, which scrolls up and down only.
            if (const auto* page = qobject_cast<const QScrollArea*>(widget)) {
                EXPECT_LE(page->widget()->width(), page->viewport()->width());
            }
        }
    }
};

TEST_P(SettingsFitTest, everyTabFitsTheWindow) {
    settings.networkAccess.set(true);
    updates.available = u"10.20.30"_s;
    for (int tab = 0; tab < tabs()->count(); ++tab) {
        SCOPED_TRACE(tabs()->tabText(tab).toStdString());
        tabs()->setCurrentIndex(tab);
        EXPECT_TRUE(waitUntil([this] { return window->size() == QSize(500, 420); }));
        drainEvents();
        drainEvents();
        expectAllWhole();
        const QRect place = tabs()->tabRect(tab);
        EXPECT_GE(place.width(), tabs()->fontMetrics().horizontalAdvance(tabs()->tabText(tab)));
        EXPECT_TRUE(window->rect().contains(
            QRect(tabs()->mapTo(window.get(), place.topLeft()), place.size())));
    }
}

TEST_P(SettingsFitTest, everyStateOfAModelFitsTheWindow) {
    constexpr int whisper = 2;
    const QString percentage =
        text(u"settings.whisper.progress"_s).arg(percentText(GetParam(), 99));
    tabs()->setCurrentIndex(whisper);
    placeDownload("progress 99\\n");
    for (const WhisperModel& model : whisperModels()) {
        models->downloadWhisperModel(model.id);
        EXPECT_TRUE(waitUntil([&] { return models->percent(model.id) == 99; }));
    }
    EXPECT_TRUE(shows(percentage));
    drainEvents();
    drainEvents();
    expectAllWhole();
    letDownloadsGo();
    EXPECT_TRUE(waitUntil([this] { return !models->isDownloading(); }));
    EXPECT_TRUE(shows(text(u"settings.whisper.failed.short"_s)));
    drainEvents();
    drainEvents();
    expectAllWhole();
}

TEST_P(SettingsFitTest, everyTextOnAModelsStateFitsTheWindow) {
    constexpr int whisper = 2;
    tabs()->setCurrentIndex(whisper);
    placeDownload({});
    for (const WhisperModel& model : whisperModels()) {
        models->downloadWhisperModel(model.id);
    }
    EXPECT_TRUE(shows(text(u"settings.whisper.downloading"_s)));
    drainEvents();
    drainEvents();
    expectAllWhole();
    placeDownload("progress 100\\n");
    letDownloadsGo();
    EXPECT_TRUE(waitUntil([this] { return !models->isDownloading(); }));
    EXPECT_TRUE(QFile::remove(home.filePath(u"go"_s)));
    for (const WhisperModel& model : whisperModels()) {
        models->downloadWhisperModel(model.id);
        EXPECT_TRUE(waitUntil(
            [&] { return models->state(model.id) == WhisperModelManager::State::Checking; }));
    }
    drainEvents();
    drainEvents();
    expectAllWhole();
}

TEST_P(SettingsFitTest, theInformationNeedsNoScrolling) {
    constexpr int info = 5;
    for (const QString& newer : {QString(), u"10.20.30"_s}) {
        updates.find(newer);
        tabs()->setCurrentIndex(info);
        drainEvents();
        drainEvents();
        for (const QScrollArea* page : window->findChildren<QScrollArea*>()) {
            if (page->isVisible()) {
                EXPECT_EQ(page->verticalScrollBar()->maximum(), 0) << qPrintable(newer);
            }
        }
    }
}

TEST_P(SettingsFitTest, theFieldsOfEveryEngineFitTheWindow) {
    tabs()->setCurrentIndex(1);
    for (const EngineDescriptor& engine : engines.engines()) {
        SCOPED_TRACE(engine.id.toStdString());
        settings.sttEngine.set(engine.id);
        drainEvents();
        drainEvents();
        expectAllWhole();
    }
}

INSTANTIATE_TEST_SUITE_P(Languages, SettingsFitTest, ::testing::ValuesIn(UILanguage::allCases()),
                         [](const auto& tested) {
                             return UILanguage(tested.param).rawValue().toStdString();
                         });

} // namespace

} // namespace orv::test
