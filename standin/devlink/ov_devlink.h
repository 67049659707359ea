#ifndef OV_DEVLINK_H
#define OV_DEVLINK_H

/// The client library of the device daemon: seven functions, imported by ordinal on Windows.
///
/// Every function returns 0 for success and anything else for failure, and throws nothing. All of them may be
/// called from several threads at once, without a lock. Strings are narrow and null-terminated; the library copies
/// what it needs. A null pointer for an output is allowed; that output isn't written then.
///
/// The daemon is looked for on this machine only, at the TCP port in the environment variable OV_DEVLINK_PORT, or
/// at 27104 if that isn't set. The library has no thread of its own: the callers read the link, so a thread in
/// ovFetchEvent gets an event without a thread switch.

#ifdef __cplusplus
extern "C" {
#endif

/// Opens the link to the daemon and waits for its greeting, 1 second at most.
/// reserved    ignored, pass 0
/// clientName  1 to 64 bytes without control characters; the daemon shows it
/// May be called again after any failure. If there is a link already, asks the daemon whether it still answers: if
/// so, keeps the link and succeeds; if not, opens a new one.
int ovConnect(int reserved, const char* clientName);

/// Closes the link. A blocked ovFetchEvent, request or ovConnect of another thread returns at once, with
/// failure (ovFetchEvent may have a release to deliver first). Fails if there was nothing to close. A link that
/// broke by itself still counts as one to close.
int ovDisconnect(void);

/// Asks the daemon, on each call, for the number of its devices. Fails if the daemon is gone or doesn't answer
/// within half a second. The other two outputs have no meaning.
int ovGetDevNum(int* deviceCount, int* unused1, int* unused2);

/// Fills a record of 96 bytes; a null-terminated name begins at byte 20.
/// deviceIndex  from 0
/// On failure the record isn't changed.
int ovGetDevInfo(int deviceIndex, void* record96);

/// Fills a record of 148 bytes: rotation code at byte 132 (32 bits), zoom-after-view flag at byte 138 (8
/// bits). On failure the record isn't changed.
int ovGetAdvancedSettings(int deviceIndex, void* record148);

/// Waits for the next event and delivers it.
/// deviceIndex  only 0 has events
/// x, ..., c    the six axes in device counts; written with every event, meaningful if the code is negative
/// eventCode    negative: a motion sample; else another event
///
/// Motion is a level: of samples that wait to be fetched the newest wins, but a release (six zeros) is always
/// delivered before the deflection that follows it. All other events queue, and none is lost or delivered
/// twice. Blocks until an event or the end of the link, which is a failure. With no link it waits 100 ms at most,
/// then fails, so that a loop around it doesn't spin. When a link ends, for whatever reason, and the last sample
/// delivered was a deflection, one release is delivered after the events that had arrived, before any failure and any
/// event of a new link.
int ovFetchEvent(int deviceIndex, short* x, short* y, short* z, short* a, short* b, short* c, int* unused1,
                 int* unused2, int* eventCode, int* unused3, int* unused4);

/// Sends the daemon the application's current mode. Succeeds once the daemon has confirmed it, within half a second.
/// application, mode  up to 400 bytes each, without control characters
int ovSetApplMode(const char* application, const char* mode);

#ifdef __cplusplus
}
#endif

#endif
