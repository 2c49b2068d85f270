#include "Platform/WideText.h"

#include <QString>
#include <QStringDecoder>

namespace platform {

std::string ToUtf8(std::wstring_view text) {
    return QString::fromWCharArray(text.data(), static_cast<qsizetype>(text.size())).toStdString();
}

std::wstring FromUtf8(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())).toStdWString();
}

bool IsUtf8(std::string_view text) {
    QStringDecoder decoder(QStringDecoder::Utf8);
    // decode() is lazy: the bytes go through, and set the error state, only
    // when its result becomes a QString.
    [[maybe_unused]] const QString decoded =
        decoder.decode(QByteArrayView(text.data(), static_cast<qsizetype>(text.size())));
    return !decoder.hasError();
}

}  // namespace platform
