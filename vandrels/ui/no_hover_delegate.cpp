#include "ui/no_hover_delegate.h"

namespace vandrels {

void NoHoverDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const {
    QStyleOptionViewItem plain(option);
    plain.state &= ~(QStyle::State_MouseOver | QStyle::State_HasFocus);
    if (plain.state & QStyle::State_Selected) {
        const QColor white(255, 255, 255);
        for (QPalette::ColorGroup group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled})
            plain.palette.setColor(group, QPalette::HighlightedText, white);
        for (QPalette::ColorGroup group : {QPalette::Active, QPalette::Inactive})
            plain.palette.setColor(group, QPalette::Text, white);
    }
    QStyledItemDelegate::paint(painter, plain, index);
}

}  // namespace vandrels
