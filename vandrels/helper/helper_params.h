// The parameters of the reference helper's parameter block: identifiers as saved in scene files.
#pragma once

enum VandrelsHelperBlock { vandrels_helper_params = 0 };

enum VandrelsHelperParam {
    vh_active = 0,               // bool, transient
    vh_file_name = 1,            // file name
    vh_proxy_file_name = 2,      // file name
    vh_use_proxy_in_viewport = 3,
    vh_use_proxy_in_render = 4,
    vh_use_name_prefix = 5,
    vh_persist_ref = 6,
    vh_reload_if_changed = 7,    // the older form of vh_persist_reload_type
    vh_selected_in_manager = 8,
    vh_other = 9,                // reference target, unused
    vh_hide_dup_names_warning = 10,  // unused
    vh_overlay = 11,
    vh_persist_reload_type = 12  // 0 reload always, 1 only if the file changed, 2 manually
};
