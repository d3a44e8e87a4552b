// The advanced reset dialog: the user picks references (those selected in the manager) or the selected scene
// nodes, the node categories and the parameter groups whose overrides to throw away, confirms, and the choice goes
// to the scripting interface's advanced reset. The choices are kept in the host INI file between showings. One
// dialog per host run, hidden (not deleted) on close.
#pragma once

#include <QDialog>

#include <vector>

class QButtonGroup;
class QCheckBox;
class QGroupBox;
class QPushButton;
class QRadioButton;

namespace vandrels {

class DisplayTristateCheckBox;

class VandrelsQtAdvancedReset : public QDialog {
    Q_OBJECT
public:
    explicit VandrelsQtAdvancedReset(QWidget* parent = nullptr);
    ~VandrelsQtAdvancedReset() override;

    static VandrelsQtAdvancedReset* Instance();
    static void SetInstance(VandrelsQtAdvancedReset* dialog);

public slots:
    void onSelectionModeChanged();
    void onCategoryAllToggled(Qt::CheckState state);
    void onCategoryCheckChanged();
    void onParametersAllToggled(Qt::CheckState state);
    void onParametersCheckChanged();
    void onResetPressed();

protected:
    void showEvent(QShowEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QGroupBox* BuildBoxGroup(const QString& title, const char* const* texts, int count, int firstColumnRows,
                             DisplayTristateCheckBox*& all, std::vector<QCheckBox*>& boxes);
    void Update();
    void SetAll(std::vector<QCheckBox*>& boxes, Qt::CheckState state);
    void LoadSettings();
    void SaveSettings();

    QRadioButton* referencesButton_ = nullptr;
    QRadioButton* nodesButton_ = nullptr;
    QButtonGroup* selectionGroup_ = nullptr;
    QGroupBox* categoryGroup_ = nullptr;
    DisplayTristateCheckBox* categoryAll_ = nullptr;
    std::vector<QCheckBox*> categoryBoxes_;
    QGroupBox* parameterGroup_ = nullptr;
    DisplayTristateCheckBox* parameterAll_ = nullptr;
    std::vector<QCheckBox*> parameterBoxes_;
    QPushButton* resetButton_ = nullptr;
    QPushButton* closeButton_ = nullptr;
    bool updating_ = false;
};

}  // namespace vandrels
