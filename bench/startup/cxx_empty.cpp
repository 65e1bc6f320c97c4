// The floor of a C++ program: linked to libstdc++, doing nothing.

#include <string>

int main(int argc, char**) {
  return std::string(static_cast<std::size_t>(argc), 'x').size() == 1 ? 0 : 1;
}
