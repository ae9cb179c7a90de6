// The parts of a page.
#ifndef TESTS_TOOLS_NODAL_PAGE_PAGE_FILE_H
#define TESTS_TOOLS_NODAL_PAGE_PAGE_FILE_H

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

// The text from after the first `from` up to the next `to`; empty if one of them does not occur.
std::string Between(std::string_view all, std::string_view from, std::string_view to);

std::string StyleOf(const std::string &page);
std::string ScriptOf(const std::string &page);
std::string EncodedDataOf(const std::string &page);

// Decodes base64, and decompresses the result.
std::string Unpacked(const std::string &encoded);

inline nlohmann::json DataOf(const std::string &page) { return nlohmann::json::parse(Unpacked(EncodedDataOf(page))); }

#endif  // TESTS_TOOLS_NODAL_PAGE_PAGE_FILE_H
