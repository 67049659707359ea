#ifndef ARXHEADERS_H
#define ARXHEADERS_H

/// Everything of the host's SDK that an application needs.

#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include "acadstatus.h"
#include "accmd.h"
#include "acdatamanager.h"
#include "acdocman.h"
#include "acedads.h"
#include "acgs.h"
#include "adesk.h"
#include "dbentity.h"
#include "dbents.h"
#include "dbobject.h"
#include "gemat.h"
#include "gepnt.h"
#include "rxapp.h"
#include "rxobject.h"

#endif
