// Message boxes and file dialogs: Qt's own, run by the layer's loop, so that the program goes on behind them.
#include <unistd.h>

#include <QAbstractButton>
#include <QApplication>
#include <QCloseEvent>
#include <QDir>
#include <QFileDialog>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMessageBox>
#include <QScreen>
#include <algorithm>
#include <cstring>
#include <string_view>

#include "platform/linux/Layer.h"

namespace layer {

namespace {

constexpr UINT IconMask = 0xF0;
constexpr QSize FileDialogSize(620, 420);
// What a desktop's frame takes of the screen.
constexpr QSize FrameAllowance(20, 50);

QWidget* widgetOfRoot(HWND handle) {
    Window* window = find(handle);
    return window ? rootOf(*window).outer.data() : nullptr;
}

// Names of files and the desktop's language may have letters that the windows' own face lacks.
QFont dialogFont() {
    QFont font = QApplication::font();
    font.setStyleStrategy(QFont::PreferAntialias);
    return font;
}

// Shows the dialog and keeps its owner's window disabled until it ends. False if the dialog is gone by then or the
// program ends behind it.
bool runDialog(const QPointer<QDialog>& dialog, HWND ownerHandle) {
    Window* asked = find(ownerHandle);
    const HWND owner = asked ? rootOf(*asked).handle : nullptr;
    const bool ownerWasEnabled = IsWindowEnabled(owner);
    bool ended = false;
    const auto noteGone = [&ended] { ended = true; };
    const auto noteEnd = [&ended] {
        ended = true;
        // The loop looks only between two messages.
        PostMessageA(GetDesktopWindow(), WM_NULL, 0, 0);
    };
    const auto gone = QObject::connect(dialog, &QObject::destroyed, noteGone);
    const auto finished = QObject::connect(dialog, &QDialog::finished, noteEnd);
    EnableWindow(owner, FALSE);
    beginForeign(dialog);
    dialog->setFont(dialogFont());
    dialog->show();
    dialog->activateWindow();
    runNestedLoop([](void* flag) { return *static_cast<bool*>(flag); }, &ended);
    endForeign(dialog);
    if (ownerWasEnabled) {
        EnableWindow(owner, TRUE);
    }
    const bool answered = ended && dialog;
    QObject::disconnect(gone);
    QObject::disconnect(finished);
    if (dialog) {
        dialog->hide();
    }
    if (find(owner)) {
        activate(owner);
    }
    return answered;
}

// A question can only be answered: neither Escape nor the window's own button ends it.
class MessageBox : public QMessageBox {
public:
    MessageBox(QWidget* owner, bool asks) : QMessageBox(owner), isQuestion(asks) {
        if (isQuestion) {
            setWindowFlags((windowFlags() | Qt::CustomizeWindowHint) & ~Qt::WindowCloseButtonHint);
        }
    }

protected:
    void keyPressEvent(QKeyEvent* event) override {
        if (!isQuestion || !event->matches(QKeySequence::Cancel)) {
            QMessageBox::keyPressEvent(event);
        }
    }

    void closeEvent(QCloseEvent* event) override {
        if (isQuestion) {
            event->ignore();
        } else {
            QMessageBox::closeEvent(event);
        }
    }

private:
    bool isQuestion;
};

QMessageBox::Icon iconFor(UINT type) {
    switch (type & IconMask) {
        case 0:
            return QMessageBox::NoIcon;
        case MB_ICONHAND:
            return QMessageBox::Critical;
        case MB_ICONEXCLAMATION:
            return QMessageBox::Warning;
        case MB_ICONINFORMATION:
            return QMessageBox::Information;
        default:
            reportUnsupported("message box", QString::number(type, 16));
            return QMessageBox::NoIcon;
    }
}

// The directory of the last choice in this run of the program.
QString lastDirectory;

QString firstDirectory() {
    for (const QString& path : {lastDirectory, QDir::currentPath(), QDir::homePath()}) {
        if (!path.isEmpty() && QFileInfo(path).isDir()) {
            return path;
        }
    }
    return QDir::rootPath();
}

class FileDialog : public QFileDialog {
public:
    FileDialog(QWidget* owner, AcceptMode kind, const QString& extension)
        : QFileDialog(owner), defaultExtension(extension) {
        setOptions(DontUseNativeDialog | DontUseCustomDirectoryIcons);
        setAcceptMode(kind);
        setFileMode(AnyFile);
        setViewMode(List);
        setHistory({});
        setSidebarUrls({QUrl::fromLocalFile(QDir::homePath()), QUrl::fromLocalFile(QDir::rootPath())});
        // A list of proposals would take the first Enter or Escape for itself.
        nameEdit().setCompleter(nullptr);
    }

    // A name with or without a directory.
    void showName(const QString& path) {
        const QFileInfo info(path);
        const QString given = path.contains(u'/') ? info.path() : QString();
        setDirectory(!given.isEmpty() && QFileInfo(given).isDir() ? given : firstDirectory());
        nameEdit().setText(info.fileName());
        nameEdit().selectAll();
        nameEdit().setFocus();
    }

    QString chosen;

protected:
    void accept() override {
        QString path = typedPath();
        if (path.isEmpty()) {
            return;
        }
        if (!QFileInfo(path).isDir() && !QFileInfo(path).fileName().contains(u'.')) {
            path += u'.' + defaultExtension;
        }
        if (QFileInfo(path).isDir()) {
            setDirectory(path);
            nameEdit().clear();
            return;
        }
        chosen = path;
        done(Accepted);
    }

private:
    QLineEdit& nameEdit() const {
        return *findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
    }

    QString typedPath() const {
        const QString typed = nameEdit().text().trimmed();
        if (typed == u"~" || typed.startsWith(u"~/")) {
            return QDir::cleanPath(QDir::homePath() + typed.mid(1));
        }
        return typed.isEmpty() ? QString() : QDir::cleanPath(directory().absoluteFilePath(typed));
    }

    QString defaultExtension;
};

// Pairs of a text and its patterns, ended by an empty one. The text may name the patterns by itself.
QStringList nameFilters(LPCSTR pairs) {
    QStringList filters;
    while (pairs && *pairs) {
        const std::string_view name(pairs);
        const std::string_view patterns(name.data() + name.size() + 1);
        QString text = decode(name, controlCodePage());
        text.truncate(text.indexOf(u'(') < 0 ? text.size() : text.indexOf(u'('));
        const QString shown = decode(patterns, controlCodePage()).replace(u';', u' ');
        filters.append(QStringLiteral("%1 (%2)").arg(text.trimmed(), shown));
        pairs = patterns.data() + patterns.size() + 1;
    }
    return filters;
}

void refuseUnknown(const OPENFILENAMEA& asked) {
    if (asked.Flags != OFN_EXPLORER || asked.lpstrCustomFilter || asked.nFilterIndex > 1 || asked.lpstrFileTitle ||
        asked.lpstrInitialDir || asked.lpfnHook || asked.lpTemplateName || !asked.lpstrFile || !asked.lpstrDefExt) {
        reportUnsupported("file dialog", QString::number(asked.Flags, 16));
    }
}

BOOL askForFile(OPENFILENAMEA& asked, QFileDialog::AcceptMode kind) {
    if (asked.lStructSize != sizeof asked) {
        return FALSE;
    }
    refuseUnknown(asked);
    QWidget* owner = widgetOfRoot(asked.hwndOwner);
    const QPointer<FileDialog> dialog(new FileDialog(owner, kind, QString::fromLatin1(asked.lpstrDefExt)));
    dialog->setWindowTitle(decode(asked.lpstrTitle, controlCodePage()));
    dialog->setNameFilters(nameFilters(asked.lpstrFilter));
    dialog->showName(QFile::decodeName(asked.lpstrFile));
    const QScreen* screen = owner ? owner->screen() : QApplication::primaryScreen();
    dialog->resize(FileDialogSize.boundedTo(screen->availableSize() - FrameAllowance));
    const bool answered = runDialog(dialog.data(), asked.hwndOwner) && dialog->result() == QDialog::Accepted;
    const QString chosen = answered ? dialog->chosen : QString();
    delete dialog.data();
    const QByteArray path = QFile::encodeName(chosen);
    if (path.isEmpty() || static_cast<size_t>(path.size()) >= asked.nMaxFile) {
        return FALSE;
    }
    std::memcpy(asked.lpstrFile, path.constData(), static_cast<size_t>(path.size()) + 1);
    const QString directory = QFileInfo(chosen).path();
    if (SetCurrentDirectoryA(QFile::encodeName(directory).constData())) {
        lastDirectory = directory;
    }
    return TRUE;
}

}  // namespace

}  // namespace layer

using namespace layer;

int MessageBoxA(HWND owner, LPCSTR text, LPCSTR caption, UINT type) {
    const bool asks = (type & ~IconMask) == MB_YESNO;
    if (!asks && (type & ~IconMask) != MB_OK) {
        reportUnsupported("message box", QString::number(type, 16));
    }
    const QPointer<MessageBox> box(new MessageBox(widgetOfRoot(owner), asks));
    box->setWindowTitle(decode(caption, controlCodePage()));
    box->setText(decode(text, controlCodePage()));
    box->setTextFormat(Qt::PlainText);
    box->setIcon(iconFor(type));
    box->setStandardButtons(asks ? QMessageBox::Yes | QMessageBox::No : QMessageBox::Ok);
    box->setDefaultButton(asks ? QMessageBox::Yes : QMessageBox::Ok);
    QApplication::beep();
    const bool answered = runDialog(box.data(), owner);
    const int answer = !answered ? 0 : !asks ? IDOK : box->result() == QMessageBox::Yes ? IDYES : IDNO;
    delete box.data();
    return answer;
}

BOOL GetOpenFileNameA(OPENFILENAMEA* dialog) {
    return askForFile(*dialog, QFileDialog::AcceptOpen);
}

BOOL GetSaveFileNameA(OPENFILENAMEA* dialog) {
    return askForFile(*dialog, QFileDialog::AcceptSave);
}
