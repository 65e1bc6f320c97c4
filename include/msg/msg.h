// The whole public interface of the msg library.

#ifndef MSG_MSG_H_
#define MSG_MSG_H_

#include "msg/ErrorInMessageDocument.h"
#include "msg/FormattingMessageChannel.h"
#include "msg/JsonLinesMessageChannel.h"
#include "msg/Language.h"
#include "msg/LanguageList.h"
#include "msg/MTE.h"
#include "msg/Message.h"
#include "msg/MessageChannel.h"
#include "msg/MessageExceptions.h"
#include "msg/MessageHandler.h"
#include "msg/MessageHandlerX.h"
#include "msg/Number.h"
#include "msg/Plural.h"
#include "msg/PluralMTE.h"
#include "msg/SeverityLevel.h"
#include "msg/SyslogMessageChannel.h"
#include "msg/Typed.h"
#include "msg/XercesXMLException.h"
#include "msg/structured_exception.h"
#include "msg/version.h"

#endif  // MSG_MSG_H_
