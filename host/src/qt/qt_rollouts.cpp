#include "qt/qt_rollouts.h"

#include "hold.h"
#include "inode.h"
#include "iparamb2.h"
#include "maxapi.h"
#include "object.h"
#include "platform/resource_tables.h"
#include "resource_module.h"
#include "winshim.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QFontMetrics>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollArea>
#include <QTimer>
#include <QVBoxLayout>

#include <cmath>
#include <functional>
#include <map>

namespace hostrt {

namespace {

// Dialog units to pixels as Windows converts them: a horizontal unit is a quarter of the dialog font's average
// character width, a vertical unit an eighth of its height, so the controls keep room for their texts in
// whatever font the session has.
struct DialogUnits {
    explicit DialogUnits(const QFont& font) {
        const QFontMetrics metrics(font);
        const QString letters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
        baseX = (metrics.horizontalAdvance(letters) / 26 + 1) / 2;
        baseY = metrics.height();
    }
    int X(int units) const { return units * baseX / 4; }
    int Y(int units) const { return units * baseY / 8; }
    int baseX;
    int baseY;
};

QString ToQ(const wchar_t* s) { return s ? QString::fromWCharArray(s) : QString(); }

bool ClassIs(const MaxResourceControl& c, const wchar_t* name) { return std::wstring_view(c.className) == name; }

}  // namespace

// One open rollout: its widgets and the bindings between them and the block.
class QtRollout : public IParamMap2 {
public:
    QtRollout(IParamBlock2* block, QWidget* parent) : block_(block) {
        ParamBlockDesc2* desc = block->GetDesc();
        HINSTANCE instance = desc && desc->cd ? desc->cd->HInstance() : nullptr;
        wchar_t title[512] = L"Parameters";
        if (desc && desc->title) LoadStringW(instance, UINT(desc->title), title, 512);
        box_ = new QGroupBox(QString::fromWCharArray(title), parent);
        box_->setObjectName("Rollout");
        const MaxResourceDialog* dialog = desc ? FindDialogResource(instance, UINT(desc->dlg_template)) : nullptr;
        if (!dialog) {
            new QLabel("(this rollout has no dialog template)", box_);
            box_->setMinimumHeight(40);
            return;
        }
        auto* page = new QWidget(box_);
        // The template's font size in points, at the host's UI scale.
        QFont font = page->font();
        if (dialog->fontSize > 0) font.setPointSizeF(dialog->fontSize * MaxSDK::GetUIScaleFactor());
        page->setFont(font);
        const DialogUnits units(font);
        page->setFixedSize(units.X(dialog->cx), units.Y(dialog->cy));
        auto* layout = new QVBoxLayout(box_);
        layout->setContentsMargins(4, 4, 4, 4);
        layout->addWidget(page, 0, Qt::AlignHCenter | Qt::AlignTop);
        for (int i = 0; i < dialog->numControls; ++i) Build(dialog->controls[i], page, units);
        Bind();
        block_->SetMap(this);
        if (ParamMap2UserDlgProc* proc = desc->GetUserDlgProc()) proc->DlgProc(0, this, nullptr, WM_INITDIALOG, 0, 0);
    }
    ~QtRollout() {
        // A rollout closed by its block's end must not touch the block again.
        if (!closed_ && block_->GetMap() == this) block_->SetMap(nullptr);
        delete box_;
    }

    IParamBlock2* GetParamBlock() override { return block_; }
    HWND GetHWnd() override { return nullptr; }
    QWidget* Widget() const { return box_; }

    // The block changed (from a script, an undo, the plug-in itself): the controls show it once the change is
    // over, one refresh for a burst of changes.
    void Invalidate(ParamID, int) override {
        if (refreshPending_) return;
        refreshPending_ = true;
        QTimer::singleShot(0, box_, [this] {
            refreshPending_ = false;
            if (!closed_) Refresh();
        });
    }

    // The block is going away or its object is no longer edited.
    void Close() {
        if (block_->GetMap() == this) block_->SetMap(nullptr);
        closed_ = true;
        box_->hide();
    }

    // Shows the block's current values.
    void Refresh() {
        updating_ = true;
        ParamBlockDesc2* desc = block_->GetDesc();
        for (int i = 0; i < desc->Count(); ++i) {
            const ParamDef& def = desc->GetParamDefByIndex(i);
            if (def.ui.ctrl_ids.empty()) continue;
            switch (def.ui.kind) {
            case PBControl::CheckBox:
                if (auto* box = qobject_cast<QCheckBox*>(controls_[def.ui.ctrl_ids[0]]))
                    box->setChecked(block_->GetInt(def.ID) != 0);
                break;
            case PBControl::CustEdit:
                if (auto* edit = qobject_cast<QLineEdit*>(controls_[def.ui.ctrl_ids[0]]))
                    edit->setText(ToQ(block_->GetStr(def.ID)));
                break;
            case PBControl::RadioButtons: {
                const int value = block_->GetInt(def.ID);
                for (int k = 0; k < int(def.ui.ctrl_ids.size()); ++k)
                    if (auto* radio = qobject_cast<QRadioButton*>(controls_[def.ui.ctrl_ids[std::size_t(k)]]))
                        radio->setChecked(k == value);
                break;
            }
            case PBControl::Spinner:
                if (auto* spin = qobject_cast<QDoubleSpinBox*>(controls_[def.ui.ctrl_ids[0]]))
                    spin->setValue(IsWhole(def) ? double(block_->GetInt(def.ID)) : double(block_->GetFloat(def.ID)));
                break;
            case PBControl::ComboBox:
                if (auto* combo = qobject_cast<QComboBox*>(controls_[def.ui.ctrl_ids[0]])) {
                    const int value = block_->GetInt(def.ID);
                    combo->setCurrentIndex(value >= 0 && value < combo->count() ? value : -1);
                }
                break;
            default: break;
            }
        }
        updating_ = false;
    }

private:
    void Build(const MaxResourceControl& c, QWidget* page, const DialogUnits& units) {
        const QString text = ToQ(c.text);
        QWidget* widget = nullptr;
        const DWORD type = c.style & BS_TYPEMASK;
        if (ClassIs(c, L"Button")) {
            if (type == BS_GROUPBOX) widget = new QGroupBox(text, page);
            else if (type == BS_CHECKBOX || type == BS_AUTOCHECKBOX || type == BS_3STATE || type == BS_AUTO3STATE)
                widget = new QCheckBox(text, page);
            else if (type == BS_RADIOBUTTON || type == BS_AUTORADIOBUTTON) widget = new QRadioButton(text, page);
            else widget = new QPushButton(text, page);
        } else if (ClassIs(c, L"Static")) {
            widget = new QLabel(text, page);
        } else if (ClassIs(c, L"Edit") || ClassIs(c, L"CustEdit")) {
            auto* edit = new QLineEdit(text, page);
            edit->setReadOnly(c.style & ES_READONLY);
            widget = edit;
        } else if (ClassIs(c, L"ComboBox")) {
            widget = new QComboBox(page);
        } else if (ClassIs(c, L"SpinnerControl")) {
            widget = new QWidget(page);  // the arrows of a spinner; its parameter binding makes the spin box
        } else {  // CustButton and other custom classes are buttons
            widget = new QPushButton(text, page);
        }
        widget->setGeometry(units.X(c.x), units.Y(c.y), units.X(c.cx), units.Y(c.cy));
        widget->setObjectName(QString("Control%1").arg(c.id));
        if (c.id != -1) controls_[c.id] = widget;
        if (auto* button = qobject_cast<QPushButton*>(widget)) {
            const int id = c.id;
            QObject::connect(button, &QPushButton::clicked, box_, [this, id] { Command(id); });
        }
    }

    // Every change a user makes is one undo step, and the controls show the block afterwards.
    void Write(ParamID id, const std::function<void()>& write) {
        if (updating_) return;
        theHold.Begin();
        write();
        theHold.Accept(L"Parameter Change");
        Refresh();
    }

    void Bind() {
        ParamBlockDesc2* desc = block_->GetDesc();
        for (int i = 0; i < desc->Count(); ++i) {
            const ParamDef& def = desc->GetParamDefByIndex(i);
            const ParamID id = def.ID;
            if (def.ui.ctrl_ids.empty()) continue;
            switch (def.ui.kind) {
            case PBControl::CheckBox:
                if (auto* box = qobject_cast<QCheckBox*>(controls_[def.ui.ctrl_ids[0]]))
                    QObject::connect(box, &QCheckBox::toggled, box_, [this, id](bool on) {
                        Write(id, [this, id, on] { block_->SetValue(id, 0, on ? 1 : 0); });
                    });
                break;
            case PBControl::CustEdit:
                if (auto* edit = qobject_cast<QLineEdit*>(controls_[def.ui.ctrl_ids[0]]))
                    QObject::connect(edit, &QLineEdit::editingFinished, box_, [this, id, edit] {
                        if (!edit->isModified()) return;
                        edit->setModified(false);
                        const std::wstring text = edit->text().toStdWString();
                        Write(id, [this, id, text] { block_->SetValue(id, 0, text.c_str()); });
                    });
                break;
            case PBControl::RadioButtons:
                for (int k = 0; k < int(def.ui.ctrl_ids.size()); ++k)
                    if (auto* radio = qobject_cast<QRadioButton*>(controls_[def.ui.ctrl_ids[std::size_t(k)]]))
                        QObject::connect(radio, &QRadioButton::toggled, box_, [this, id, k](bool on) {
                            if (on) Write(id, [this, id, k] { block_->SetValue(id, 0, k); });
                        });
                break;
            case PBControl::Spinner:
                BindSpinner(def);
                break;
            case PBControl::ComboBox:
                BindComboBox(def);
                break;
            default: break;
            }
        }
        Refresh();
    }

    static bool IsWhole(const ParamDef& def) { return hostrt::KindOfType(def.type) == hostrt::ValueKind::Int; }

    // The spinner's edit and arrows become one spin box over both places. Typing writes when the edit is left,
    // each arrow step writes at once; either is one undo step. The block's range bounds it.
    void BindSpinner(const ParamDef& def) {
        QWidget* edit = controls_[def.ui.ctrl_ids[0]];
        QWidget* arrows = def.ui.ctrl_ids.size() > 1 ? controls_[def.ui.ctrl_ids[1]] : nullptr;
        if (!edit) return;
        auto* spin = new QDoubleSpinBox(edit->parentWidget());
        spin->setObjectName(edit->objectName());
        spin->setGeometry(arrows ? edit->geometry().united(arrows->geometry()) : edit->geometry());
        spin->setKeyboardTracking(false);
        const bool whole = IsWhole(def);
        const EditSpinnerType type = def.ui.spin_type;
        spin->setDecimals(whole || type == EDITTYPE_INT || type == EDITTYPE_POS_INT ? 0 : 3);
        const bool positive = type == EDITTYPE_POS_INT || type == EDITTYPE_POS_FLOAT;
        constexpr double kUnbounded = 1.0e9;
        spin->setRange(def.has_range ? double(def.range_low.AsFloat()) : positive ? 0.0 : -kUnbounded,
                       def.has_range ? double(def.range_high.AsFloat()) : kUnbounded);
        spin->setSingleStep(whole ? std::max(1.0, double(def.ui.spin_scale)) : double(def.ui.spin_scale));
        for (int id : def.ui.ctrl_ids) controls_[id] = spin;
        delete edit;
        delete arrows;
        const ParamID id = def.ID;
        QObject::connect(spin, &QDoubleSpinBox::valueChanged, box_, [this, id, whole](double value) {
            Write(id, [this, id, whole, value] {
                if (whole) block_->SetValue(id, 0, int(std::lround(value)));
                else block_->SetValue(id, 0, float(value));
            });
        });
    }

    // A drop-down list of the block description's item texts; item k is value k.
    void BindComboBox(const ParamDef& def) {
        auto* combo = qobject_cast<QComboBox*>(controls_[def.ui.ctrl_ids[0]]);
        if (!combo) return;
        ParamBlockDesc2* desc = block_->GetDesc();
        HINSTANCE instance = desc->cd ? desc->cd->HInstance() : nullptr;
        for (StringResID item : def.ui.item_ids) {
            wchar_t text[512] = L"";
            LoadStringW(instance, UINT(item), text, 512);
            combo->addItem(QString::fromWCharArray(text));
        }
        const ParamID id = def.ID;
        QObject::connect(combo, &QComboBox::currentIndexChanged, box_, [this, id](int index) {
            if (index >= 0) Write(id, [this, id, index] { block_->SetValue(id, 0, index); });
        });
    }

    // A button no parameter is bound to: the plug-in's rollout procedure hears it as Windows would tell it.
    void Command(int id) {
        ParamBlockDesc2* desc = block_->GetDesc();
        if (ParamMap2UserDlgProc* proc = desc ? desc->GetUserDlgProc() : nullptr)
            proc->DlgProc(GetCOREInterface()->GetTime(), this, nullptr, WM_COMMAND, MAKEWPARAM(id, BN_CLICKED), 0);
        if (!closed_) Refresh();
    }

public:
    bool closed_ = false;

private:
    IParamBlock2* block_;
    QGroupBox* box_ = nullptr;
    std::map<int, QWidget*> controls_;
    bool updating_ = false;
    bool refreshPending_ = false;
};

QtRolloutPresenter::QtRolloutPresenter(QScrollArea* panel) : panel_(panel), column_(new QWidget) {
    column_->setObjectName("RolloutColumn");
    auto* layout = new QVBoxLayout(column_);
    layout->setContentsMargins(4, 4, 4, 4);
    layout->addStretch();
    panel_->setWidget(column_);
    previous_ = SetParamRolloutPresenter(this);
}

QtRolloutPresenter::~QtRolloutPresenter() {
    SetParamRolloutPresenter(previous_);
    rollouts_.clear();
}

void QtRolloutPresenter::ShowSelection() {
    Interface* ip = GetCOREInterface();
    Animatable* want = nullptr;
    if (ip->GetSelNodeCount() == 1)
        if (INode* node = ip->GetSelNode(0))
            if (Object* obj = node->GetObjectRef()) want = obj->FindBaseObject();
    Animatable* current = editing_ ? Animatable::GetAnimByHandle(editing_) : nullptr;
    if (want == current) {
        for (auto& rollout : rollouts_) rollout->Refresh();
        return;
    }
    // The command panel's interface: this host's core interface stands in for the editing interface.
    auto* editIp = reinterpret_cast<IObjParam*>(ip);
    if (current) current->EndEditParams(editIp, 0, want);
    rollouts_.clear();  // an object deleted meanwhile could not close its own
    editing_ = want ? Animatable::GetHandleByAnim(want) : 0;
    ip->SetCurEditObject(want ? static_cast<Object*>(want) : nullptr);
    if (want) want->BeginEditParams(editIp, 0, current);
}

void QtRolloutPresenter::Open(IObjParam*, IParamBlock2* block) {
    auto rollout = std::make_unique<QtRollout>(block, column_);
    static_cast<QVBoxLayout*>(column_->layout())->insertWidget(int(rollouts_.size()), rollout->Widget());
    rollouts_.push_back(std::move(rollout));
}

void QtRolloutPresenter::Close(IObjParam*, IParamBlock2* block) {
    for (auto it = rollouts_.begin(); it != rollouts_.end(); ++it)
        if ((*it)->GetParamBlock() == block) {
            (*it)->Close();
            closed_.push_back(std::move(*it));
            rollouts_.erase(it);
            QTimer::singleShot(0, column_, [this] { closed_.clear(); });
            return;
        }
}

}  // namespace hostrt
