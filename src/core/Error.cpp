#include "Error.h"

#include <utility>

using namespace Qt::StringLiterals;

Error::Error(QString domain, int code, QString localizedDescription)
    : m_domain(std::move(domain))
    , m_code(code)
    , m_localizedDescription(std::move(localizedDescription))
{
}

Error videoError(const QString& message)
{
    return Error(u"Vexet.Video"_s, 1, message);
}
