#include "FileDialogs.h"

#include "ThreadChecks.h"

#include <QApplication>
#include <QFileDialog>
#include <QFileInfo>

#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

FileDialogs::~FileDialogs() {
    if (open_) {
        open_->disconnect();
        delete open_;
    }
}

void FileDialogs::chooseFile(const FileChoice& choice, Answer<const QString&> chosen) {
    ORV_ON_MAIN();
    if (open_) {
        open_->raise();
        open_->activateWindow();
        return;
    }
    auto* dialog = new QFileDialog(QApplication::activeWindow(), choice.title);
    open_ = dialog;
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setFileMode(QFileDialog::ExistingFile);
    dialog->setNameFilter(choice.suffix.toUpper() + u" (*."_s + choice.suffix.toLower() + u" *."_s +
                          choice.suffix.toUpper() + u")"_s);
    if (!choice.startsWith.isEmpty()) {
        dialog->setDirectory(QFileInfo(choice.startsWith).absolutePath());
    }
    QObject::connect(dialog, &QFileDialog::fileSelected, dialog,
                     [chosen = std::move(chosen)](const QString& path) {
                         chosen(QFileInfo(path).absoluteFilePath());
                     });
    dialog->setModal(true);
    dialog->show();
}

} // namespace orv
