#pragma once

#include <QDateTime>

/// The host's clock. Made through MockFactory<CurrentTime>, so tests fix the time.
class CurrentTime
{
public:
    virtual ~CurrentTime();
    virtual QDateTime now() const;
};
