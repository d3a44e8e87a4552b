#include "script/dialog_requests.h"

namespace vandrels {
namespace {
AboutPresenter g_about = nullptr;
FilePicker g_picker = nullptr;
}  // namespace

void SetDialogPresenters(AboutPresenter about, FilePicker picker) {
    g_about = about;
    g_picker = picker;
}

void RequestAbout() {
    if (g_about) g_about();
}

int RequestFilePick(MSTR& initial, const MCHAR* title, std::vector<MSTR>* list) {
    return g_picker ? g_picker(initial, title, list) : 0;
}

}  // namespace vandrels
