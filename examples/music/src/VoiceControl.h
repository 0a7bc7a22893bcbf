// SPDX-License-Identifier: Apache-2.0
#ifndef EXAMPLE_MUSIC_VOICE_CONTROL_H
#define EXAMPLE_MUSIC_VOICE_CONTROL_H

#include "Player.h"

#include <norix.hpp>

/**
 * @brief Lets the assistant drive a player: what it may ask for, who answers, what is declared of
 * it.
 * @param player  Has to outlive the assistant
 * @throw norix::Error
 */
void letDrive(norix::Assistant &assistant, Player &player);

#endif
