#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Print the table of atmosphere.csv: the U.S. Standard Atmosphere 1976 up to 84 km."""
import math

GRAVITY = 9.80665           # m/s^2
MOLAR_MASS = 0.0289644      # kg/mol
GAS_CONSTANT = 8.31432      # J/(mol K), the value the standard uses
HYDROSTATIC = GRAVITY * MOLAR_MASS / GAS_CONSTANT  # K/m
SEA_LEVEL_TEMPERATURE = 288.15  # K
SEA_LEVEL_PRESSURE = 101325.0   # Pa

# geopotential altitude of the base (m), temperature gradient from there on (K/m)
LAYERS = [(0, -0.0065), (11000, 0.0), (20000, 0.001), (32000, 0.0028), (47000, 0.0),
          (51000, -0.0028), (71000, -0.002)]
TOP, STEP = 84000, 25


def climb(temperature, gradient, height):
    """Temperature and change of ln(pressure) `height` metres above a layer's base."""
    if gradient == 0:
        return temperature, -HYDROSTATIC * height / temperature
    warmer = temperature + gradient * height
    return warmer, -HYDROSTATIC / gradient * math.log(warmer / temperature)


def atmosphere(altitude):
    """Temperature and ln(pressure / sea-level pressure) at a geopotential altitude."""
    temperature, exponent = SEA_LEVEL_TEMPERATURE, 0.0
    tops = [base for base, _ in LAYERS[1:]] + [TOP]
    for (base, gradient), top in zip(LAYERS, tops):
        temperature, change = climb(temperature, gradient, min(altitude, top) - base)
        exponent += change
        if altitude <= top:
            break
    return temperature, exponent


def main():
    print("altitude_m,temperature_K,exponent,pressure_Pa")
    for altitude in range(0, TOP + 1, STEP):
        temperature, exponent = atmosphere(altitude)
        pressure = SEA_LEVEL_PRESSURE * math.exp(exponent)
        print(f"{altitude},{temperature:.4f},{exponent + 0.0:.12f},{pressure:.7g}")


if __name__ == "__main__":
    main()
