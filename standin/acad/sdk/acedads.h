#ifndef ACEDADS_H
#define ACEDADS_H

#include "adesk.h"
#include "dbobject.h"

/// The host's plain functions. Those with an int result return RTNORM for success.

/// Prints on the command line, as wprintf does. Write %ls for a wide string: compilers disagree on %s.
int acutPrintf(const ACHAR* format, ...);

/// Reads a system variable. Names compare without case. On a failure the result is unchanged.
int acedGetVar(const ACHAR* name, resbuf* result);

/// Makes a selection set, to be freed with acedSSFree. Mode L"I" takes what is selected now and fails if
/// nothing is. Other modes fail.
int acedSSGet(const ACHAR* mode, const void* pt1, const void* pt2, const resbuf* filter, ads_name ss);
int acedSSLength(const ads_name ss, Adesk::Int32* length);
/// Returns the name of the entity at a position, counted from 0.
int acedSSName(const ads_name ss, Adesk::Int32 i, ads_name entity);
int acedSSFree(const ads_name ss);

/// Redraws an entity. mode 1 shows it.
int acedRedraw(const ads_name entity, int mode);

/// Returns the viewport of the layout, null on the model tab.
AcDbObjectId acedActiveViewportId();

#endif
