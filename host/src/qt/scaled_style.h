// hostrt::ScaledStyle: the application style of a graphical session at the host's UI scale. Qt's own styles
// size the marks of check boxes and radio buttons in fixed pixels, so at 150 % they stay at their 100 % size
// beside the scaled texts; this style scales those metrics and leaves everything else to the base style.
#pragma once

#include <QProxyStyle>

namespace hostrt {

class ScaledStyle : public QProxyStyle {
public:
    // Takes the application's current style as its base.
    explicit ScaledStyle(float scale);
    int pixelMetric(PixelMetric metric, const QStyleOption* option = nullptr,
                    const QWidget* widget = nullptr) const override;

private:
    float scale_;
};

}  // namespace hostrt
