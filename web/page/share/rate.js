// Frame rates as the tool writes them: `24`, `12.5`, `24000/1001`.

const kLeastRate = 0.01;
const kMostRate = 1000;
const kMostDecimals = 6;
const kBroadcastRates = [24, 30, 48, 60, 120];

/**
 * Reads a rate: { numerator, denominator, perSecond }, or null when it is none from 0.01 to 1000.
 *
 * A decimal that rounds 24, 30, 48, 60 or 120 times 1000/1001 to two digits or more stands for that exact ratio.
 */
export function parseRate(text) {
  const match = /^(\d{1,9})(?:\/(\d{1,9})|\.(\d+))?$/.exec(String(text));
  if (!match || (match[3]?.length ?? 0) > kMostDecimals) {
    return null;
  }
  const [, whole, below, decimals] = match;
  if (below !== undefined) {
    return ratio(Number(whole), Number(below));
  }
  const scale = 10 ** (decimals?.length ?? 0);
  const rounded = Number(whole) * scale + Number(decimals ?? 0);
  const broadcast =
    scale >= 100 && kBroadcastRates.find((rate) => Math.round((rate * 1000 * scale) / 1001) === rounded);
  return broadcast ? ratio(broadcast * 1000, 1001) : ratio(rounded, scale);
}

/** The rates in use that are nearest to a measured one, as texts, and the measured one to three decimals. */
export function likelyRates(perSecond) {
  const nominal = Math.max(1, Math.round(perSecond));
  const decimal = Math.min(Math.max(Math.round(perSecond * 1000) / 1000, kLeastRate), kMostRate);
  const broadcast = kBroadcastRates.filter((rate) => rate === Math.round((perSecond * 1001) / 1000));
  return [String(nominal), ...broadcast.map((rate) => `${rate * 1000}/1001`), String(decimal)];
}

function ratio(numerator, denominator) {
  const perSecond = numerator / denominator;
  return perSecond >= kLeastRate && perSecond <= kMostRate ? { numerator, denominator, perSecond } : null;
}
