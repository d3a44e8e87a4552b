#include "qt/scaled_style.h"

#include <QApplication>
#include <QStyleFactory>

#include <cmath>

namespace hostrt {

ScaledStyle::ScaledStyle(float scale)
    : QProxyStyle(QStyleFactory::create(QApplication::style()->name())), scale_(scale) {}

int ScaledStyle::pixelMetric(PixelMetric metric, const QStyleOption* option, const QWidget* widget) const {
    const int base = QProxyStyle::pixelMetric(metric, option, widget);
    switch (metric) {
    case PM_IndicatorWidth:
    case PM_IndicatorHeight:
    case PM_ExclusiveIndicatorWidth:
    case PM_ExclusiveIndicatorHeight:
    case PM_CheckBoxLabelSpacing:
    case PM_RadioButtonLabelSpacing:
        return int(std::lround(float(base) * scale_));
    default:
        return base;
    }
}

}  // namespace hostrt
