// The manager table's item delegate: rows show no hover highlight and no focus frame, and selected rows have
// white text.
#pragma once

#include <QStyledItemDelegate>

namespace vandrels {

class NoHoverDelegate : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;
    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
};

}  // namespace vandrels
