// Peers: the other message libraries the workloads compare msg with, each
// set up once on the generated catalogue and checked against the expected
// texts before it is measured (a misconfigured peer would otherwise be timed
// on its not-found path).
//
// Each peer is compiled in only if the build found it (MSG_BENCH_WITH_*).

#ifndef MSG_BENCH_PEERS_H_
#define MSG_BENCH_PEERS_H_

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#ifdef MSG_BENCH_WITH_ICU
#include <unicode/fmtable.h>
#include <unicode/msgfmt.h>
#include <unicode/ures.h>
#endif

namespace msg_bench {

// The keys of the standard sequence as C strings, in sequence order; the
// same array for every contender.
const std::vector<const char*>& standardSequenceKeys();

// std::unordered_map from identifier to the preferred text (msg syntax):
// the floor for a lookup.
const std::unordered_map<std::string_view, const char*>& floorMap();

#ifdef MSG_BENCH_WITH_GETTEXT
// The text domain of the catalogue, bound to its .mo files.
const char* gettextDomain();

// Empty if dcgettext gives the expected text for every key, else what
// differs.
std::string checkGettext();
#endif

#ifdef MSG_BENCH_WITH_ICU
// The de_AT bundle of the catalogue, opened once and kept.
UResourceBundle* icuBundle();

// Empty if every key resolves to the expected text through ICU's fallback,
// else what differs.
std::string checkIcu();

// `format` applied to the two arguments, as UTF-8.
std::string formatIcu(const icu::MessageFormat& format, const icu::Formattable (&arguments)[2]);
#endif

}  // namespace msg_bench

#endif  // MSG_BENCH_PEERS_H_
