#include "tools/hostcheck/HostCheck.hpp"

#include <iostream>

int main() {
    return audlmd::checkHost(std::cout);
}
