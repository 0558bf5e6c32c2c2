#pragma once

#include <QString>

// A failure as a value: a domain, a code and the complete user-facing message.
class Error {
public:
    Error() = default;
    Error(QString domain, int code, QString localizedDescription);

    const QString& domain() const { return m_domain; }
    int code() const { return m_code; }
    const QString& localizedDescription() const { return m_localizedDescription; }

    friend bool operator==(const Error&, const Error&) = default;

private:
    QString m_domain;
    int m_code = 0;
    QString m_localizedDescription;
};

// Every failure the recording side reports goes through here: domain "Vexet.Video", code 1.
Error videoError(const QString& message);
