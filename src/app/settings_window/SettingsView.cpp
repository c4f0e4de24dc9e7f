#include "SettingsView.h"

#include "EnginesTab.h"
#include "GeneralTab.h"
#include "InfoTab.h"
#include "LanguagesTab.h"
#include "Page.h"
#include "SettingsIcons.h"
#include "SettingsTabBar.h"
#include "StorageTab.h"
#include "Symbols.h"
#include "Theme.h"
#include "ThreadChecks.h"
#include "WhisperTab.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QScrollArea>
#include <QStackedWidget>
#include <QVBoxLayout>

#include <array>
#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

struct Tab {
    QString titleKey;
    QString symbol;
    QWidget* (*make)(const TabContext& context);
    bool scrolls = true; ///< The page as a whole.
};

QWidget* makeLanguagesTab(const TabContext& context) {
    return new LanguagesTab(context);
}

const std::array<Tab, 6>& allTabs() {
    static const std::array<Tab, 6> tabs = {
        {{u"settings.tab.general"_s, u"gear"_s, makeGeneralTab},
         {u"settings.tab.engines"_s, u"waveform"_s, makeEnginesTab},
         {u"settings.tab.whisper"_s, u"cpu"_s, makeWhisperTab},
         {u"settings.tab.languages"_s, u"globe"_s, makeLanguagesTab, false},
         {u"settings.tab.storage"_s, u"internaldrive"_s, makeStorageTab},
         {u"settings.tab.info"_s, u"info"_s, makeInfoTab}}};
    return tabs;
}

} // namespace

SettingsView::SettingsView(SettingsEnvironment environment, QWidget* parent)
    : QWidget(parent)
    , environment_(std::move(environment))
    , files_(environment_.disk)
    , bindings_(std::make_unique<Bindings>(environment_.l10n))
    , tabs_(new SettingsTabBar(this))
    , pages_(new QStackedWidget(this)) {
    registerSettingsIcons();
    const auto text = [this](const QString& key) { return bindings_->text(key); };
    actions_ = std::make_unique<SettingsActions>(
        ActionsEnvironment{.settings = environment_.settings,
                           .files = files_,
                           .dialogs = environment_.dialogs,
                           .chooser = environment_.chooser,
                           .opener = environment_.opener,
                           .text = text,
                           .supportFolder = environment_.paths.supportFolder(),
                           .outputFolder = environment_.paths.outputFolder(),
                           .backendLog = environment_.paths.backendLog(),
                           .earlierLog = environment_.paths.earlierBackendLog()});
    auto* top = new QHBoxLayout;
    top->setContentsMargins(space::small, space::small, space::small, space::tiny);
    top->addStretch(1);
    top->addWidget(tabs_);
    top->addStretch(1);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addLayout(top);
    column->addWidget(pages_, 1);
    for (const Tab& tab : allTabs()) {
        tabs_->addTab(symbol(tab.symbol), {});
        pages_->addWidget(new QWidget(pages_));
    }
    bindings_->translated(this, [this] {
        for (int index = 0; index < tabs_->count(); ++index) {
            tabs_->setTabText(index,
                              bindings_->text(allTabs()[static_cast<std::size_t>(index)].titleKey));
        }
    });
    connect(tabs_, &QTabBar::currentChanged, this, &SettingsView::showTab);
    showTab(0);
}

SettingsView::~SettingsView() {
    // The controls refer to what the members own, so they go first.
    delete pages_;
    delete tabs_;
}

QString SettingsView::title() const {
    ORV_ON_MAIN();
    return bindings_->text(u"settings.title"_s);
}

TabContext SettingsView::context() const {
    return {environment_, *bindings_, *actions_, environment_.models};
}

void SettingsView::showTab(int index) {
    ORV_ON_MAIN();
    QWidget* page = pages_->widget(index);
    if (page->layout() == nullptr) {
        const Tab& tab = allTabs()[static_cast<std::size_t>(index)];
        auto* layout = new QVBoxLayout(page);
        layout->setContentsMargins(0, 0, 0, 0);
        QWidget* content = tab.make(context());
        layout->addWidget(tab.scrolls ? makePage(content, page) : content);
    }
    pages_->setCurrentIndex(index);
}

void SettingsView::keyPressEvent(QKeyEvent* event) {
    const bool forward = event->matches(QKeySequence::NextChild);
    if (forward || event->matches(QKeySequence::PreviousChild)) {
        const int count = tabs_->count();
        tabs_->setCurrentIndex((tabs_->currentIndex() + (forward ? 1 : count - 1)) % count);
    } else if (event->key() == Qt::Key_Escape || event->matches(QKeySequence::Close)) {
        window()->close();
    } else {
        QWidget::keyPressEvent(event);
    }
}

} // namespace orv
