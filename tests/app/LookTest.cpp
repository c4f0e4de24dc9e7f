#include "Look.h"

#include "Buttons.h"
#include "Card.h"
#include "NullAppearance.h"
#include "OrvaneStyle.h"
#include "PortalAppearance.h"
#include "SegmentedControl.h"
#include "StyleDrawing.h"
#include "Symbols.h"
#include "TextLabels.h"
#include "Theme.h"
#include "ToneLabel.h"
#include "WaitUntil.h"

#include <QAccessible>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDBusVariant>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollBar>
#include <QSlider>
#include <QSpinBox>
#include <QTabBar>
#include <QVBoxLayout>

#include <gtest/gtest.h>

#include <utility>

using namespace Qt::StringLiterals;

namespace orv::test {

namespace {

class FakeAppearance : public DesktopAppearance {
  public:
    void setHandler(std::function<void(ColourScheme)> newHandler) override {
        handler = std::move(newHandler);
    }

    std::function<void(ColourScheme)> handler;
};

class LookTest : public ::testing::Test {
  protected:
    static QImage picture(QWidget& widget) { return widget.grab().toImage(); }

    static const Theme& theme() {
        return qobject_cast<OrvaneStyle*>(QApplication::style())->theme();
    }

    /// Gives `widget` the focus as the Tab key does.
    static void focusByKey(QWidget& widget) {
        widget.window()->setAttribute(Qt::WA_KeyboardFocusChange);
        widget.setFocus(Qt::TabFocusReason);
        drainEvents();
    }

    FakeAppearance appearance;
    Look look{appearance};
};

TEST_F(LookTest, isLightUntilTheDesktopSaysOtherwise) {
    EXPECT_FALSE(theme().dark);
    EXPECT_EQ(QApplication::palette().color(QPalette::Window), Theme::light().window);
}

TEST_F(LookTest, followsTheDesktopWhileWidgetsAreOnScreen) {
    QWidget window;
    auto* label = new ToneLabel(&window, Tone::Error);
    window.show();
    appearance.handler(ColourScheme::Dark);
    drainEvents();
    EXPECT_TRUE(theme().dark);
    EXPECT_EQ(window.palette().color(QPalette::Window), Theme::darkened().window);
    EXPECT_EQ(label->palette().color(QPalette::WindowText), Theme::darkened().error);
    appearance.handler(ColourScheme::Light);
    drainEvents();
    EXPECT_EQ(window.palette().color(QPalette::Window), Theme::light().window);
    EXPECT_EQ(label->palette().color(QPalette::WindowText), Theme::light().error);
}

TEST_F(LookTest, withoutAWishOfTheDesktopItsPaletteDecides) {
    OrvaneStyle style;
    QPalette palette(QColor(0x20, 0x20, 0x20));
    style.polish(palette);
    EXPECT_TRUE(style.theme().dark);
    palette = QPalette(QColor(0xee, 0xee, 0xee));
    style.polish(palette);
    EXPECT_FALSE(style.theme().dark);
    EXPECT_EQ(palette.color(QPalette::Window), Theme::light().window);
}

TEST_F(LookTest, theDesktopsWishOutweighsItsPalette) {
    OrvaneStyle style;
    style.setScheme(ColourScheme::Light);
    QPalette palette(QColor(0x20, 0x20, 0x20));
    style.polish(palette);
    EXPECT_FALSE(style.theme().dark);
}

TEST_F(LookTest, theFocusIsVisibleOnEveryControl) {
    QWidget window;
    auto* layout = new QVBoxLayout(&window);
    QList<QWidget*> controls = {new QPushButton(u"Plain"_s),
                                makeButton(nullptr, ButtonKind::Primary),
                                makeButton(nullptr, ButtonKind::Danger),
                                makeButton(nullptr, ButtonKind::Quiet),
                                new IconButton(u"gear"_s),
                                new QCheckBox(u"Switch"_s),
                                new QRadioButton(u"Radio"_s),
                                new QLineEdit,
                                new QComboBox,
                                new QSpinBox,
                                new QSlider(Qt::Horizontal)};
    for (QWidget* control : controls) {
        layout->addWidget(control);
    }
    window.show();
    window.activateWindow();
    ASSERT_TRUE(waitUntil([&] { return window.isActiveWindow(); }));
    for (QWidget* control : controls) {
        window.setFocus();
        drainEvents();
        const QImage before = picture(*control);
        focusByKey(*control);
        EXPECT_NE(picture(*control), before) << control->metaObject()->className();
    }
}

TEST_F(LookTest, aSwitchShowsItsState) {
    QCheckBox box;
    const QImage off = picture(box);
    box.setChecked(true);
    EXPECT_NE(picture(box), off);
    box.setEnabled(false);
    EXPECT_NE(picture(box), off);
}

TEST_F(LookTest, kindsOfButtonsDiffer) {
    QList<QImage> pictures;
    for (const ButtonKind kind :
         {ButtonKind::Plain, ButtonKind::Primary, ButtonKind::Danger, ButtonKind::Quiet}) {
        const std::unique_ptr<QPushButton> button(makeButton(nullptr, kind));
        button->resize(80, 30);
        const QImage image = picture(*button);
        EXPECT_FALSE(pictures.contains(image)) << int(kind);
        pictures.append(image);
    }
}

TEST_F(LookTest, symbolsTakeTheColourOfTheText) {
    const std::unique_ptr<QPushButton> button(makeButton(nullptr, ButtonKind::Primary));
    button->setIcon(symbol(u"stop.circle.fill"_s));
    button->resize(60, 30);
    const QImage image = picture(*button);
    EXPECT_EQ(image.pixelColor(30 - 7, 15), theme().onAccent);
    EXPECT_EQ(image.pixelColor(10, 15), theme().accent);
}

TEST_F(LookTest, everySymbolThatIsNamedIsThere) {
    for (const QString& name :
         {u"play.circle.fill"_s, u"stop.circle.fill"_s, u"gear"_s, u"power"_s, u"refresh"_s,
          u"arrow.right"_s, u"eye"_s, u"eye.slash"_s, u"copy"_s, u"folder"_s, u"trash"_s,
          u"download"_s, u"search"_s, u"info"_s, u"warning"_s, u"close"_s}) {
        const QImage image = symbol(name).pixmap(24, 24).toImage();
        bool drawn = false;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                drawn = drawn || image.pixelColor(x, y).alpha() > 0;
            }
        }
        EXPECT_TRUE(drawn) << name.toStdString();
    }
}

TEST_F(LookTest, anIconButtonIsKnownByItsText) {
    IconButton button(u"refresh"_s);
    button.setText(u"Refresh List"_s);
    EXPECT_EQ(button.toolTip(), u"Refresh List"_s);
    EXPECT_EQ(QAccessible::queryAccessibleInterface(&button)->text(QAccessible::Name),
              u"Refresh List"_s);
}

TEST_F(LookTest, segmentsTellTheChoiceHoweverItIsMade) {
    SegmentedControl control;
    QList<int> chosen;
    QObject::connect(&control, &SegmentedControl::chosen, &control,
                     [&](int id) { chosen.append(id); });
    for (const int id : {0, 1, 2}) {
        control.addSegment(id);
        control.setSegmentText(id, QString::number(id));
    }
    control.setChosen(1);
    EXPECT_TRUE(chosen.isEmpty());
    EXPECT_EQ(control.chosenId(), 1);
    const QList<QPushButton*> buttons = control.findChildren<QPushButton*>();
    buttons[2]->click();
    buttons[2]->click();
    QAccessible::queryAccessibleInterface(buttons[0])
        ->actionInterface()
        ->doAction(QAccessibleActionInterface::toggleAction());
    EXPECT_EQ(chosen, (QList{2, 0}));
}

TEST_F(LookTest, aCardsFieldsShareOneColumnOfLabels) {
    Card card;
    auto* first = new QLineEdit(&card);
    auto* second = new QLineEdit(&card);
    nameField(card.addField(first), first, u"A"_s);
    nameField(card.addField(second), second, u"A much longer label"_s);
    card.show();
    drainEvents();
    EXPECT_EQ(first->x(), second->x());
    EXPECT_EQ(first->accessibleName(), u"A"_s);
}

TEST(PortalAppearance, understandsWhatThePortalSays) {
    const auto wrapped = [](const QVariant& value) {
        return QVariant::fromValue(QDBusVariant(value));
    };
    EXPECT_EQ(colourSchemeFrom(QVariant(0U)), ColourScheme::NoPreference);
    EXPECT_EQ(colourSchemeFrom(QVariant(1U)), ColourScheme::Dark);
    EXPECT_EQ(colourSchemeFrom(wrapped(QVariant(2U))), ColourScheme::Light);
    EXPECT_EQ(colourSchemeFrom(wrapped(wrapped(QVariant(1U)))), ColourScheme::Dark);
    EXPECT_EQ(colourSchemeFrom(QVariant(9U)), ColourScheme::NoPreference);
    EXPECT_EQ(colourSchemeFrom(QVariant(u"dark"_s)), ColourScheme::NoPreference);
    EXPECT_EQ(colourSchemeFrom({}), ColourScheme::NoPreference);
}

TEST(NullAppearance, neverSaysAnything) {
    NullAppearance appearance;
    bool told = false;
    appearance.setHandler([&](ColourScheme) { told = true; });
    drainEvents();
    EXPECT_FALSE(told);
}

/// How light what is drawn between two columns of `picture` is on average, 0..255, without the
/// ground.
int lightness(const QImage& picture, int left, int right) {
    const QRgb ground = picture.pixel(0, 0);
    int sum = 0;
    int count = 0;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = left; x < right; ++x) {
            if (picture.pixel(x, y) != ground) {
                sum += qGray(picture.pixel(x, y));
                ++count;
            }
        }
    }
    return count == 0 ? 0 : sum / count;
}

TEST_F(LookTest, aPictureAmongTheLettersIsLighterOnDarkGround) {
    const QString text = u"🎤 Microphone"_s;
    const QRect area(0, 0, 300, 40);
    const auto drawn = [&](const auto& draw) {
        QImage picture(area.size(), QImage::Format_RGB32);
        picture.fill(Theme::darkened().segment);
        QPainter painter(&picture);
        painter.setPen(Theme::darkened().quietText);
        draw(painter);
        return picture;
    };
    const QImage plain =
        drawn([&](QPainter& painter) { drawLine(&painter, area, Qt::AlignCenter, text); });
    const QImage onDark = drawn([&](QPainter& painter) { drawLineOnDark(&painter, area, text); });
    const QFontMetricsF metrics{QApplication::font()};
    const int left = static_cast<int>((area.width() - metrics.horizontalAdvance(text)) / 2);
    const int letters = left + static_cast<int>(metrics.horizontalAdvance(u"🎤"_s)) + 2;
    EXPECT_GT(lightness(onDark, left, letters), lightness(plain, left, letters) + 20);
    EXPECT_EQ(onDark.copy(letters, 0, 300 - letters, 40),
              plain.copy(letters, 0, 300 - letters, 40));
}

} // namespace

} // namespace orv::test
