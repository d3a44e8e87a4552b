// The library's global scripting interface: MAXScript's `Vandrels`, through which every reference operation
// can be driven without the user interface. One static instance registers itself as a core interface while
// the library loads; it keeps no data of its own.
#pragma once

#include "ifnpub.h"

#define VANDRELS_INTERFACE_ID Interface_ID(0x9663dfa5, 0x4f273881)

// Function identifiers; properties are pairs of a getter and a setter.
enum VandrelsInterfaceFunction : FunctionID {
    vi_add_vandrel = 0,
    vi_add_vandrel_dialog = 1,
    vi_num_vandrels = 2,
    vi_get_vandrel = 3,
    vi_get_all_vandrels = 4,
    vi_remove_all_vandrels = 5,
    vi_reload_vandrels = 6,
    vi_remove_vandrels = 7,
    vi_reset_vandrels = 8,
    vi_duplicate_vandrels = 9,
    vi_merge_vandrels = 10,
    vi_open_manager = 11,
    vi_close_manager = 12,
    vi_is_manager_open = 13,
    vi_about = 14,
    vi_print_times = 17,
    vi_merge_for_network_render = 19,
    vi_set_merge_for_network_render = 20,
    vi_save_refs_as_merged = 21,
    vi_set_save_refs_as_merged = 22,
    vi_get_show_duplicated_names_warning = 23,
    vi_set_show_duplicated_names_warning = 24,
    vi_get_save_vandrels_as_merged = 25,
    vi_set_save_vandrels_as_merged = 26,
    vi_advanced_reset = 27
};

class VandrelsInterface : public FPStaticInterface {
public:
    VandrelsInterface();

protected:
    // Runs function fid; a call with fewer parameters than the function reads raises the host's out-of-range
    // exception, an unknown id answers FPS_NO_SUCH_FUNCTION.
    FPStatus _dispatch_fn(FunctionID fid, TimeValue t, FPValue& result, FPParams* p) override;
};
