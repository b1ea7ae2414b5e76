// SPDX-License-Identifier: MIT
#include "app/safe_xml.h"

#include "base/file.h"

namespace hollin {
bool SafeXml::Open(const std::string& path) {
  FileContents file;
  if (!ReadWholeFile(path, file, kLargestXmlFile)) return false;
  reader.clear();
  reader.setNamespaceProcessing(false);
  reader.addData(QByteArray(file.Text().data(), static_cast<qsizetype>(file.size)));
  isDamaged = false;
  return true;
}

bool SafeXml::NextChild(const char* name) {
  while (!isDamaged) {
    switch (reader.readNext()) {
      case QXmlStreamReader::StartDocument:
      case QXmlStreamReader::Comment:
        break;
      case QXmlStreamReader::Characters:
        isDamaged = !reader.isWhitespace();
        break;
      case QXmlStreamReader::StartElement:
        isDamaged = reader.name() != QLatin1String(name);
        return !isDamaged;
      case QXmlStreamReader::EndElement:
      case QXmlStreamReader::EndDocument:
        return false;
      default:
        isDamaged = true;
    }
  }
  return false;
}

QString SafeXml::Attribute(const char* name) const {
  return reader.attributes().value(QLatin1String(name)).toString();
}

bool SafeXml::EndsWell() {
  ExpectNoChild();
  return !isDamaged && reader.tokenType() == QXmlStreamReader::EndDocument;
}

}  // namespace hollin
