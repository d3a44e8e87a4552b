// The manager's tool-button icons: the host's multi-resolution icon "Vandrels/<name>" when the host has one,
// else the PNG files installed under the host's installation folder,
// UI_ln/Icons/<Dark|Light>/Vandrels/<name>_<size>.png for the sizes 16, 20, 24, 30, 36 and 48 (the first theme
// that has any wins). Nothing found gives an empty icon.
#pragma once

#include <QIcon>
#include <QString>

namespace vandrels {

QIcon ManagerIcon(const QString& name);

}  // namespace vandrels
