// Everything a plug-in needs of its host, in one include.
#pragma once

#include "bitarray.h"
#include "classids.h"
#include "control.h"
#include "geom.h"
#include "hold.h"
#include "ioapi.h"
#include "maxexception.h"
#include "maxtypes.h"
#include "notify.h"
#include "plugapi.h"
#include "ref.h"
#include "strclass.h"
#include "tab.h"
