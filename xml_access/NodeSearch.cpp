// The search operations of DOMNode.

#include <algorithm>
#include <deque>
#include <sstream>

#include <xercesc/dom/DOMException.hpp>

#include "msg/XercesXMLException.h"
#include "xml_access/DOMNode.h"

namespace XercesXML {

// Breadth first over a queue of handles, so a deep tree costs no stack and
// the queue holds at most two neighbouring depths. Each queued handle holds a
// reference on the document; all of them go when the operation returns.
DOMNode DOMNode::findFirstNodeByNameList(const std::vector<std::string>& names) const {
  try {
    if (!isValid()) {
      return DOMNode();
    }
    std::deque<DOMNode> queue;
    queue.push_back(*this);
    while (!queue.empty()) {
      const std::string name = queue.front().getNodeName();
      if (std::find(names.begin(), names.end(), name) != names.end()) {
        return queue.front();
      }
      for (DOMNode child = queue.front().getFirstChild(); child.isValid();
           child = child.getNextSibling()) {
        queue.push_back(child);
      }
      queue.pop_front();
    }
    return DOMNode();
  } catch (const xercesc::DOMException& failure) {
    std::ostringstream text;
    text << "XercesXML - Abort: error in DOM at "
         << "\"findFirstNodeByNameList\": "
         << "Error code = " << failure.code << std::endl;
    throw NavigationError(text.str());
  }
}

DOMNode DOMNode::findFirstNodeByName(const std::string& name) const {
  return findFirstNodeByNameList(std::vector<std::string>{name});
}

}  // namespace XercesXML
