// The library's private interface between its two shared libraries.
//
// libmsg-core.so holds every layer below XML; libmsg.so holds the XML access
// and document layers and links the core. Both are built with hidden
// visibility. What applications use is marked MSG_EXPORT (include/msg/).
// The few parts of the core that the document layer needs beyond that are
// marked MSG_PRIVATE_API: they leave libmsg-core.so so that libmsg.so can
// link them, but no installed header declares them, so applications cannot
// reach them and the core may change them in any release. The list is kept
// in cmake/CheckExportedSymbols.cmake, which fails the build if anything
// else leaves the core.
//
// Not installed.

#ifndef MSG_PLATFORM_PRIVATEAPI_H_
#define MSG_PLATFORM_PRIVATEAPI_H_

#define MSG_PRIVATE_API __attribute__((visibility("default")))

#endif  // MSG_PLATFORM_PRIVATEAPI_H_
