#include "ui/manager_icons.h"

#include "maxapi.h"

#include <QFileInfo>

namespace vandrels {

// This host keeps no multi-resolution icon store (its icons are files), so only the installed files are looked
// up.
QIcon ManagerIcon(const QString& name) {
    Interface* ip = GetCOREInterface();
    const MCHAR* root = ip ? ip->GetDir(APP_MAXROOT_DIR) : nullptr;
    if (!root || !*root) return {};
    QString folder = QString::fromWCharArray(root);
    if (folder.endsWith('/') || folder.endsWith('\\')) folder.chop(1);
    for (const char* theme : {"Dark", "Light"}) {
        QIcon icon;
        for (int size : {16, 20, 24, 30, 36, 48}) {
            const QString path =
                QString("%1/UI_ln/Icons/%2/Vandrels/%3_%4.png").arg(folder, theme, name).arg(size);
            if (QFileInfo::exists(path)) icon.addFile(path, QSize(size, size));
        }
        if (!icon.isNull()) return icon;
    }
    return {};
}

}  // namespace vandrels
