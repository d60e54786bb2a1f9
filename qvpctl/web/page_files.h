// The files of the page, which the build puts into the program: nothing else is ever served.
#pragma once

#include <span>
#include <string_view>

struct PageFile {
    std::string_view path;  // "/page.css"
    const char* type;
    std::string_view content;
};

std::span<const PageFile> pageFiles();
