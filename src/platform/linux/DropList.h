// The entries of a combo box and the list below it.
#pragma once

#include <QAbstractListModel>
#include <QFrame>
#include <QListView>
#include <QScreen>
#include <QVBoxLayout>

#include "platform/linux/GrippedBar.h"
#include "platform/linux/Layer.h"

namespace layer {

// The entries as the program gave them; the letters are made when one is shown, since a list may have hundreds.
class EntryModel : public QAbstractListModel {
public:
    using QAbstractListModel::QAbstractListModel;

    int rowCount(const QModelIndex& parent = {}) const override {
        return parent.isValid() ? 0 : static_cast<int>(entries.size());
    }
    QVariant data(const QModelIndex& index, int role) const override {
        if (index.isValid() && role == Qt::SizeHintRole) {
            return QSize(0, rowHeight);
        }
        if (!index.isValid() || (role != Qt::DisplayRole && role != Qt::EditRole)) {
            return {};
        }
        return text(index.row());
    }
    QString text(int row) const {
        return decode(entries[static_cast<size_t>(row)], controlCodePage());
    }
    int add(const char* entry) {
        const int row = rowCount();
        beginInsertRows({}, row, row);
        entries.emplace_back(entry);
        endInsertRows();
        return row;
    }
    void clear() {
        beginResetModel();
        entries.clear();
        endResetModel();
    }
    std::vector<QByteArray> entries;
    int rowHeight = 1;  // that of the font's cell
};

// The list below a box: a window of its own without the keyboard, which the box works.
class DropList : public QFrame {
public:
    DropList(QWidget* box, EntryModel& model) : QFrame(box, Qt::ToolTip | Qt::FramelessWindowHint) {
        setFrameStyle(static_cast<int>(QFrame::Box) | QFrame::Plain);
        auto* layout = new QVBoxLayout(this);
        layout->setContentsMargins(1, 1, 1, 1);
        layout->addWidget(&view);
        view.setModel(&model);
        view.setVerticalScrollBar(bar);
        view.setFont(box->font());
        view.setFrameShape(QFrame::NoFrame);
        view.setFocusPolicy(Qt::NoFocus);
        view.setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        view.setVerticalScrollMode(QAbstractItemView::ScrollPerItem);
        view.setUniformItemSizes(true);
        // A list of few rows is no higher than they are.
        view.setMinimumSize(1, 1);
    }
    int rowHeight() const {
        return std::max(1, view.sizeHintForRow(0));
    }
    void showAt(const QRect& box, int rows) {
        const int height = rows * rowHeight() + 4;
        const QRect screen = parentWidget()->screen()->geometry();
        const bool above = box.bottom() + height > screen.bottom() && box.top() - height >= screen.top();
        setGeometry(box.left(), above ? box.top() - height : box.bottom() + 1, box.width(), height);
        show();
    }
    // The row at a place of the screen; -1 for the frame, the bar and what lies outside.
    int rowAt(QPoint place) const {
        const QPoint inside = view.viewport()->mapFromGlobal(place);
        return view.viewport()->rect().contains(inside) ? view.indexAt(inside).row() : -1;
    }
    bool contains(QPoint place) const {
        return geometry().contains(place);
    }

    QListView view;
    GrippedBar* const bar = new GrippedBar(Qt::Vertical);
};

}  // namespace layer
