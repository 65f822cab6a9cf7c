// Between the texts of the core and those of the windows.
#pragma once

#include <QFile>
#include <QString>
#include <filesystem>
#include <string>
#include <string_view>

namespace selvane {

inline QString ToQt(std::string_view utf8) {
  return QString::fromUtf8(utf8.data(), static_cast<qsizetype>(utf8.size()));
}

inline std::string FromQt(const QString& text) {
  return text.toStdString();
}

// Names of files are bytes. Those that are no text in the user's encoding do not come back the same.
inline QString PathToQt(const std::filesystem::path& path) {
  return QFile::decodeName(QByteArray::fromStdString(path.native()));
}

inline std::filesystem::path PathFromQt(const QString& name) {
  return {QFile::encodeName(name).toStdString()};
}

}  // namespace selvane
