// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "tests/support/TemporaryFolder.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>

TemporaryFolder::TemporaryFolder() {
  std::string name =
      (std::filesystem::temp_directory_path() / "velorn-test-").string() + std::string(6, 'X');
  if (!mkdtemp(name.data())) throw std::runtime_error("cannot make a folder like " + name);
  path_ = name;
}

TemporaryFolder::~TemporaryFolder() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

std::string contentOf(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

std::set<std::string> namesIn(const std::filesystem::path& folder) {
  std::set<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    names.insert(entry.path().filename().string());
  }
  return names;
}

void writeContent(const std::filesystem::path& file, const std::string& content) {
  std::ofstream stream(file, std::ios::binary);
  stream.write(content.data(), static_cast<std::streamsize>(content.size()));
  stream.close();
  if (!stream) throw std::runtime_error("cannot write " + file.string());
}

std::string variable(const char* name) {
  const char* const value = std::getenv(name);
  return value ? value : "";
}

OtherVariable::OtherVariable(std::string name, const std::string& value)
    : name_(std::move(name)), before_(variable(name_.c_str())) {
  setenv(name_.c_str(), value.c_str(), 1);
}

OtherVariable::~OtherVariable() {
  setenv(name_.c_str(), before_.c_str(), 1);
}

std::string outputOf(const std::string& shellCommand) {
  std::FILE* const pipe = popen(shellCommand.c_str(), "r");
  if (!pipe) throw std::runtime_error("cannot run " + shellCommand);
  std::string output;
  for (int character = 0; (character = std::fgetc(pipe)) != EOF;)
    output += static_cast<char>(character);
  if (const int status = pclose(pipe)) {
    throw std::runtime_error(shellCommand + " ended with status " + std::to_string(status) + "\n" +
                             output);
  }
  return output;
}
