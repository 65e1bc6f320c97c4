// DocumentCompilation: puts the texts of a message document into a compiled
// catalogue writer, read with the same rules as the loader reads them.
//
// Private to the library: not installed. The compiled layer knows nothing of
// XML; this is where documents meet it.

#ifndef MSG_MESSAGE_DOCUMENTS_DOCUMENTCOMPILATION_H_
#define MSG_MESSAGE_DOCUMENTS_DOCUMENTCOMPILATION_H_

namespace msg {

class CompiledCatalogueWriter;

// Adds every Text of the message document `path` to `writer`, in every
// language, read with the loader's rules (includes, validation, the
// loader's defaults for absent attributes). A later text of a key replaces
// an earlier one, as in a load.
// Raises DocumentRefused for a document that the loader would refuse, and
// std::invalid_argument for a text the format cannot hold; `writer` is then
// as it was.
// REQUIRES: the XML system is started; path is not null.
void addMessageDocument(CompiledCatalogueWriter& writer, const char* path);

}  // namespace msg

#endif  // MSG_MESSAGE_DOCUMENTS_DOCUMENTCOMPILATION_H_
