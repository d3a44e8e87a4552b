// A check box that shows a mixed value as partially checked but never reaches that state by a click: a click on
// a box that is not checked checks it, a click on a checked box clears it.
#pragma once

#include <QCheckBox>

namespace vandrels {

class DisplayTristateCheckBox : public QCheckBox {
public:
    using QCheckBox::QCheckBox;

protected:
    void nextCheckState() override {
        setCheckState(checkState() == Qt::Checked ? Qt::Unchecked : Qt::Checked);
    }
};

}  // namespace vandrels
