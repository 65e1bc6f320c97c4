# Checks what msg's shared libraries export. Run in script mode:
#
#   cmake -DLIBRARY=<path of the library> -DKIND=<core|documents>
#         [-DNM=<nm>] [-DCXXFILT=<c++filt>] -P CheckExportedSymbols.cmake
#
# KIND core is libmsg-core.so, KIND documents is libmsg.so. Both are built
# with hidden visibility; only the classes marked MSG_EXPORT may leave them,
# and from libmsg-core.so also the private interface that libmsg.so links
# (marked MSG_PRIVATE_API, see platform/PrivateApi.h), exactly the symbols
# listed below. The check fails
#  - if a required public symbol of the library is missing, and
#  - if any defined dynamic symbol belongs to something else: an internal
#    class (the message table, the XML layer apart from its exception
#    classes, helpers), a free function, or a private symbol not listed.
# Instantiations of standard library templates are let through: the
# standard headers give them default visibility, and they are weak.

include("${CMAKE_CURRENT_LIST_DIR}/ScriptSupport.cmake")

if(NOT DEFINED LIBRARY OR NOT EXISTS "${LIBRARY}")
  message(FATAL_ERROR "CheckExportedSymbols.cmake: -DLIBRARY=<library> is required")
endif()
if(NOT DEFINED KIND OR NOT KIND MATCHES "^(core|documents)$")
  message(FATAL_ERROR "CheckExportedSymbols.cmake: -DKIND=core or -DKIND=documents is required")
endif()
if(NOT DEFINED NM OR NM STREQUAL "")
  set(NM nm)
endif()
if(NOT DEFINED CXXFILT OR CXXFILT STREQUAL "")
  set(CXXFILT c++filt)
endif()

# Classes (and exception classes) that applications use.
set(exported_classes
  "msg::LanguageList" "msg::MTE" "msg::Message" "msg::MessageHandler" "msg::MessageChannel"
  "msg::FormattingMessageChannel" "msg::MessageHandlerX"
  "msg::JsonLinesMessageChannel" "msg::SyslogMessageChannel" "msg::Plurals" "msg::PluralMTE"
  "msg::MessageHandlerError" "msg::MessageExists" "msg::MessageNotFound"
  "msg::ErrorInMessageDocument"
  "structured_exception"
  "XercesXML::Exception" "XercesXML::NotInitialized" "XercesXML::InitializationFailure"
  "XercesXML::ParsingError" "XercesXML::NullPointer" "XercesXML::NavigationError")

# The private interface of libmsg-core.so: what the document layer of
# libmsg.so calls in the core beyond the public classes. Nothing else.
set(private_symbols
  "msg::setExceptionCatalogueSource(msg::MessageHandler* (*)())"
  "msg::PluralRules::forLanguage(msg::Language, msg::PluralKind)"
  "msg::MessageTable::attachPluralForms(msg::MTE const*, std::unique_ptr<msg::PluralForms, std::default_delete<msg::PluralForms> >)"
  "msg::CompiledCatalogueWriter::addAll(msg::CompiledCatalogueWriter&&)"
  "msg::CompiledCatalogueWriter::add(msg::SeverityLevel, std::__cxx11::basic_string<char, std::char_traits<char>, std::allocator<char> > const&, std::__cxx11::basic_string<char, std::char_traits<char>, std::allocator<char> > const&, std::__cxx11::basic_string<char, std::char_traits<char>, std::allocator<char> > const&, std::__cxx11::basic_string<char, std::char_traits<char>, std::allocator<char> > const&)"
  "msg::CompiledCatalogueWriter::add(msg::SeverityLevel, std::__cxx11::basic_string<char, std::char_traits<char>, std::allocator<char> > const&, std::__cxx11::basic_string<char, std::char_traits<char>, std::allocator<char> > const&, std::__cxx11::basic_string<char, std::char_traits<char>, std::allocator<char> > const&, std::__cxx11::basic_string<char, std::char_traits<char>, std::allocator<char> > const&, msg::PluralKind, unsigned int, std::vector<msg::CompiledCatalogueWriter::Form, std::allocator<msg::CompiledCatalogueWriter::Form> >)")

# A few symbols each public family must have, by the library that holds it.
if(KIND STREQUAL "core")
  set(required_symbols
    "msg::LanguageList::distance(msg::Language) const"
    "msg::MTE::MTE(short, char const*, char const*, char const*, char const*, msg::MessageHandler*, bool, bool)"
    "msg::Message::substitute(unsigned int, char const*)"
    "msg::Message::substitute(unsigned int, double, int)"
    "msg::MessageHandler::object()"
    "msg::MessageChannel::onMessage(msg::Message const&)"
    "msg::Plurals::category(msg::Language, msg::PluralKind, char const*)"
    "msg::PluralMTE::PluralMTE(short, char const*, char const*, char const*, msg::PluralKind, unsigned int, char const*, std::initializer_list<msg::PluralMTE::Form>, msg::MessageHandler*, bool)"
    "typeinfo for msg::MessageHandler"
    "typeinfo for msg::MessageChannel"
    "typeinfo for msg::MessageHandlerError"
    "typeinfo for msg::MessageExists"
    "typeinfo for msg::MessageNotFound"
    "typeinfo for structured_exception"
    ${private_symbols})
else()
  set(required_symbols
    "msg::MessageHandlerX::object()"
    "typeinfo for msg::MessageHandlerX"
    "typeinfo for XercesXML::Exception"
    "typeinfo for XercesXML::ParsingError")
  # Neither the core's private interface nor its public classes come from
  # libmsg.so: an application gets each symbol from one library only.
  set(private_symbols "")
endif()

run_step("${NM} -D --defined-only on ${LIBRARY}" "${NM}" -D --defined-only --format=posix
  "${LIBRARY}")
set(nm_output "${run_stdout}")

# posix format: "<name> <type> <value> [<size>]", one symbol a line.
string(REPLACE "\n" ";" nm_lines "${nm_output}")
set(mangled_names "")
foreach(line IN LISTS nm_lines)
  if(line MATCHES "^([^ ]+) [A-Za-z] ")
    list(APPEND mangled_names "${CMAKE_MATCH_1}")
  endif()
endforeach()
list(LENGTH mangled_names symbol_count)
if(symbol_count EQUAL 0)
  message(FATAL_ERROR "${LIBRARY} exports no symbols at all")
endif()

# Demangle in one go, keeping the order.
string(REPLACE ";" "\n" mangled_text "${mangled_names}")
file(WRITE "${LIBRARY}.symbols.txt" "${mangled_text}\n")
execute_process(COMMAND "${CXXFILT}" INPUT_FILE "${LIBRARY}.symbols.txt"
  RESULT_VARIABLE result OUTPUT_VARIABLE demangled_text)
file(REMOVE "${LIBRARY}.symbols.txt")
if(NOT result EQUAL 0)
  message(FATAL_ERROR "${CXXFILT} failed")
endif()
string(REGEX REPLACE "\n$" "" demangled_text "${demangled_text}")
string(REPLACE "\n" ";" demangled_names "${demangled_text}")

# Prefixes that name what a symbol belongs to.
set(special_prefixes "typeinfo name for " "typeinfo for " "vtable for " "VTT for "
  "construction vtable for " "guard variable for " "non-virtual thunk to "
  "virtual thunk to " "covariant return thunk to ")
string(REPLACE ";" "|" class_alternatives "${exported_classes}")

set(unexpected "")
set(index 0)
foreach(name IN LISTS demangled_names)
  list(GET mangled_names ${index} mangled)
  math(EXPR index "${index} + 1")

  list(FIND private_symbols "${name}" private_position)
  if(NOT private_position EQUAL -1)
    continue()
  endif()
  if(name MATCHES "MessageTable")
    list(APPEND unexpected "${name}")
    continue()
  endif()
  # Standard library template instantiations (std::, __gnu_cxx::).
  if(mangled MATCHES "^_Z(T[ISV])?N?K?(St|9__gnu_cxx)")
    continue()
  endif()
  # Symbols the linker defines.
  if(mangled MATCHES "^(_init|_fini|_edata|_end|__bss_start)$")
    continue()
  endif()

  set(owner "${name}")
  foreach(prefix IN LISTS special_prefixes)
    string(FIND "${owner}" "${prefix}" position)
    if(position EQUAL 0)
      string(LENGTH "${prefix}" prefix_length)
      string(SUBSTRING "${owner}" ${prefix_length} -1 owner)
    endif()
  endforeach()
  if(NOT owner MATCHES "^(${class_alternatives})(::|$)")
    list(APPEND unexpected "${name}")
  endif()
endforeach()

set(missing "")
foreach(required IN LISTS required_symbols)
  list(FIND demangled_names "${required}" position)
  if(position EQUAL -1)
    list(APPEND missing "${required}")
  endif()
endforeach()

if(unexpected OR missing)
  string(REPLACE ";" "\n  " unexpected_text "${unexpected}")
  string(REPLACE ";" "\n  " missing_text "${missing}")
  message(FATAL_ERROR "${LIBRARY}:\n"
    "internal or unexpected symbols exported:\n  ${unexpected_text}\n"
    "public symbols missing:\n  ${missing_text}")
endif()
message(STATUS "${symbol_count} exported symbols, all of public classes"
               " or of the private interface")
