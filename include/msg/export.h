// Symbol visibility of the msg library.
//
// The library is built with -fvisibility=hidden. Every class that applications
// use (and every exception class they catch) is marked MSG_EXPORT, so that its
// members and its type information are visible across the library boundary.
// Nothing else leaves libmsg.so.

#ifndef MSG_EXPORT_H_
#define MSG_EXPORT_H_

#define MSG_EXPORT __attribute__((visibility("default")))

#endif  // MSG_EXPORT_H_
