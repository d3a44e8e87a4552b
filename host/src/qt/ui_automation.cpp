#include "qt/ui_automation.h"

#include "maxscript/maxscript.h"

#include <QAction>
#include <QApplication>
#include <QWidget>

namespace hostrt {

namespace {

constexpr const MCHAR* kTriggerAction = L"uiTriggerAction";

Value* TriggerAction(Value** args, int count) {
    if (count != 1) throw ArgCountError(kTriggerAction, 1, count);
    const QString wanted = QString::fromWCharArray(args[0]->to_string()).remove('&');
    for (QWidget* widget : QApplication::allWidgets()) {
        for (QAction* action : widget->findChildren<QAction*>(Qt::FindDirectChildrenOnly))
            if (action->isEnabled() && QString(action->text()).remove('&').compare(wanted, Qt::CaseInsensitive) == 0) {
                action->trigger();
                return &true_value;
            }
    }
    return &false_value;
}

}  // namespace

void RegisterUiAutomation() { RegisterMAXScriptPrimitive(kTriggerAction, &TriggerAction); }
void UnregisterUiAutomation() { UnregisterMAXScriptPrimitive(kTriggerAction); }

}  // namespace hostrt
