/* SPDX-License-Identifier: Apache-2.0 */
#ifndef NORIX_HPP
#define NORIX_HPP

/**
 * @file norix.hpp
 * @brief Makes an application drivable by the voice assistant, in C++17.
 *
 * The same as norix.h, on top of it, with types that make its usual mistakes impossible: an answer
 * that is given twice, never, too late, on another thread or to another request, and a bundle that
 * is read when it is gone. Header-only; the functions of norix.h may not be called beside it.
 *
 * | Class | What it is |
 * |---|---|
 * | norix::Assistant | initialises the library, and holds the callables |
 * | norix::Request | a request to answer later |
 * | norix::Timer | something to do later, on the main loop |
 * | norix::Action, norix::State | an action's id; what is declared |
 * | norix::Outcome | what became of an answer |
 * | norix::Error, norix::Result | failures |
 *
 * Parameters in JSON, states as JSON and declarations: norix/json.hpp, which needs nlohmann-json.
 *
 * CMake: the target Norix::cpp. pkg-config: the module norix-cpp. Everything is compiled either
 * with exceptions or without (-fno-exceptions); RTTI is not needed.
 *
 * @code
 * norix::Assistant assistant;
 * assistant.onState([&lamp] { return lamp.isOn() ? "on" : "off"; });
 * assistant.onAction("lampOff", [&lamp] {
 *   lamp.switchOff();
 *   return "The lamp is off";
 * });
 * @endcode
 */

#include <norix/Action.hpp>
#include <norix/Assistant.hpp>
#include <norix/Error.hpp>
#include <norix/Outcome.hpp>
#include <norix/Request.hpp>
#include <norix/State.hpp>
#include <norix/Timer.hpp>

#endif
