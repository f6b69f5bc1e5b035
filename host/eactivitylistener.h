#pragma once

/// Codes of the host's activity events.
class EActivityListener
{
public:
    enum Event {
        InputMultiText = 78,
    };
};
