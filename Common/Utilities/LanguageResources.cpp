#include "Common/Utilities/LanguageResources.h"

#include <QBoxLayout>
#include <QBuffer>
#include <QFile>
#include <QHash>
#include <QResource>
#include <QUiLoader>
#include <QWidget>
#include <memory>
#include <mutex>
#include <unordered_map>

#include "Platform/DebugOutput.h"
#include "Platform/Library.h"

namespace {

QString PackRoot() {
    return platform::ResourceRoot(AfxGetResourceHandle());
}

void Report(const QString& text) {
    OutputDebugStringW((text + QChar('\n')).toStdWString().c_str());
}

// "\n", "\t" and "\\" are the escapes a line can carry.
QString Unescape(QStringView text) {
    QString out;
    out.reserve(text.size());
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text[i];
        if (c != QChar('\\') || i + 1 == text.size()) {
            out += c;
            continue;
        }
        const QChar next = text[++i];
        if (next == QChar('n'))
            out += QChar('\n');
        else if (next == QChar('t'))
            out += QChar('\t');
        else if (next == QChar('\\'))
            out += QChar('\\');
        else
            out += QStringView(text).mid(i - 1, 2);
    }
    return out;
}

using StringTable = QHash<UINT, QString>;

StringTable ParseStrings(const QString& path, const QByteArray& data) {
    StringTable table;
    const QStringList lines = QString::fromUtf8(data).split(QChar('\n'));
    for (qsizetype n = 0; n < lines.size(); ++n) {
        QStringView line(lines[n]);
        if (line.endsWith(QChar('\r'))) line.chop(1);
        if (line.isEmpty() || line.startsWith(QChar('#'))) continue;
        const qsizetype tab = line.indexOf(QChar('\t'));
        bool isNumber = false;
        const UINT id = tab > 0 ? line.left(tab).toUInt(&isNumber) : 0;
        if (!isNumber) {
            Report(QStringLiteral("%1:%2: not \"<id><tab><text>\", skipped").arg(path).arg(n + 1));
            continue;
        }
        if (table.contains(id))
            Report(QStringLiteral("%1:%2: string %3 given twice").arg(path).arg(n + 1).arg(id));
        table.insert(id, Unescape(line.mid(tab + 1)));
    }
    return table;
}

// One parsed table per registered pack. A pack's data pointer identifies its
// registration, so a pack unloaded and another mapped at the same place is
// never answered from the old table.
struct CachedTable {
    const uchar* data = nullptr;
    StringTable strings;
};

std::mutex cacheMutex;
std::unordered_map<std::string, CachedTable> cache;

const QString* FindString(UINT id, QString& storage) {
    const QString root = PackRoot();
    if (root.isEmpty()) return nullptr;
    const QString path = root + QStringLiteral("/strings.txt");
    const QResource resource(path);
    if (!resource.isValid()) return nullptr;

    std::lock_guard lock(cacheMutex);
    CachedTable& entry = cache[path.toStdString()];
    if (entry.data != resource.data()) {
        entry.data = resource.data();
        entry.strings = ParseStrings(path, resource.uncompressedData());
    }
    const auto it = entry.strings.constFind(id);
    if (it == entry.strings.constEnd()) return nullptr;
    storage = *it;
    return &storage;
}

// A template drawn with a top-level layout keeps it (the form is embedded as a
// whole); one drawn with fixed geometry gives its controls to the dialog.
void AdoptForm(std::unique_ptr<QWidget> form, QWidget* dialog) {
    if (!form->windowTitle().isEmpty()) dialog->setWindowTitle(form->windowTitle());
    if (!form->styleSheet().isEmpty()) dialog->setStyleSheet(form->styleSheet());
    if (form->testAttribute(Qt::WA_SetFont)) dialog->setFont(form->font());
    dialog->resize(form->size());

    if (form->layout() != nullptr) {
        form->setWindowFlags(Qt::Widget);
        auto* holder = dialog->layout();
        if (holder == nullptr) {
            holder = new QVBoxLayout(dialog);
            holder->setContentsMargins(0, 0, 0, 0);
        }
        holder->addWidget(form.release());
        return;
    }
    const QList<QWidget*> controls = form->findChildren<QWidget*>(Qt::FindDirectChildrenOnly);
    for (QWidget* control : controls) {
        const QRect geometry = control->geometry();
        const bool hidden = control->isHidden();
        control->setParent(dialog);
        control->setGeometry(geometry);
        control->setVisible(!hidden);
    }
}

}  // namespace

bool LoadResourceString(UINT id, std::wstring& text) {
    QString storage;
    if (FindString(id, storage) == nullptr) return false;
    text = storage.toStdWString();
    return true;
}

QString ResourceString(UINT id) {
    QString storage;
    return FindString(id, storage) != nullptr ? storage : QString();
}

bool LoadDialogTemplate(UINT id, QWidget* dialog) {
    const QString root = PackRoot();
    if (root.isEmpty() || dialog == nullptr) return false;
    QFile file(root + QStringLiteral("/templates/%1.ui").arg(id));
    if (!file.open(QIODevice::ReadOnly)) return false;

    QUiLoader loader;
    std::unique_ptr<QWidget> form(loader.load(&file, nullptr));
    if (!form) {
        Report(QStringLiteral("template %1: %2").arg(id).arg(loader.errorString()));
        return false;
    }
    AdoptForm(std::move(form), dialog);
    return true;
}

QPixmap LoadResourceBitmap(UINT id) {
    const QString root = PackRoot();
    if (root.isEmpty()) return {};
    return QPixmap(root + QStringLiteral("/bitmaps/%1.png").arg(id));
}

QWidget* GetDlgItem(QWidget* dialog, int controlId) {
    if (dialog == nullptr) return nullptr;
    const QString name = QString::number(controlId);
    // Breadth first over the dialog's own controls; boxes opened over the
    // dialog are windows of their own and keep their ids to themselves.
    QList<QObject*> pending = dialog->children();
    while (!pending.isEmpty()) {
        QObject* object = pending.takeFirst();
        auto* widget = qobject_cast<QWidget*>(object);
        if (widget == nullptr || widget->isWindow()) continue;
        if (widget->objectName() == name) return widget;
        pending += widget->children();
    }
    return nullptr;
}
