// The file-format part of a saver.
#pragma once

class CZyFileFormat {
 public:
  virtual ~CZyFileFormat() = default;

  virtual bool OpenFormat(const char* filename) = 0;
  // False before the counting pass, true before the writing pass.
  virtual void EnableFormat(bool state) = 0;
  virtual bool FormatHasError() = 0;
  virtual void CleanupFormat() = 0;
};
