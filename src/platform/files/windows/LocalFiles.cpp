#include "platform/files/LocalFiles.h"

#include "platform/system/windows/Handle.h"
#include "platform/system/windows/WideText.h"

namespace quillmoor {
namespace {

DWORD attributesOf(const std::string& path) {
  return ::GetFileAttributesW(WidePath(path).c_str());
}

HANDLE openToWrite(const std::string& path) {
  return ::CreateFileW(WidePath(path).c_str(), GENERIC_WRITE,
                       FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
                       FILE_ATTRIBUTE_NORMAL, nullptr);
}

}  // namespace

bool LocalPathExists(const std::string& path) {
  return attributesOf(path) != INVALID_FILE_ATTRIBUTES;
}

bool LocalFolderExists(const std::string& path) {
  const DWORD attributes = attributesOf(path);
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

bool CreateLocalFolder(const std::string& path) {
  return ::CreateDirectoryW(WidePath(path).c_str(), nullptr) != FALSE;
}

bool RemoveLocalFile(const std::string& path) {
  const std::wstring name = WidePath(path);
  return ::DeleteFileW(name.c_str()) != FALSE || ::RemoveDirectoryW(name.c_str()) != FALSE;
}

bool FlushLocalFile(const std::string& path) {
  const Handle file(openToWrite(path));
  return file && ::FlushFileBuffers(file.get()) != FALSE;
}

bool LocalFileIsWritable(const std::string& path) {
  return static_cast<bool>(Handle(openToWrite(path)));
}

}  // namespace quillmoor
